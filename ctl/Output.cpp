#include "Command.h"

#include <QJsonDocument>
#include <cerrno>
#include <cstring>

namespace quillmark::ctl {

namespace {

QByteArray lineOf(const QJsonDocument &document, bool isPretty) {
    const QByteArray text = document.toJson(isPretty ? QJsonDocument::Indented : QJsonDocument::Compact);
    return text.endsWith('\n') ? text : text + '\n';
}

} // namespace

void Output::write(const QByteArray &bytes) const {
    const auto length = static_cast<size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, length, m_stream) != length || std::fflush(m_stream) != 0) {
        throw Failure{QStringLiteral("standard output"), QString::fromLocal8Bit(std::strerror(errno))}; // NOLINT
    }
}

void Output::line(const QString &text) const { write(text.toUtf8() + '\n'); }
void Output::text(const QString &text) const { write(text.toUtf8()); }
void Output::json(const QJsonArray &array) const { write(lineOf(QJsonDocument(array), m_isPretty)); }
void Output::json(const QJsonObject &object) const { write(lineOf(QJsonDocument(object), m_isPretty)); }

void Output::json(const QJsonValue &value) const {
    if (value.isArray()) {
        json(value.toArray());
    } else if (value.isObject()) {
        json(value.toObject());
    } else { // no document is less than an array
        const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
        write(array.sliced(1, array.size() - 2) + '\n');
    }
}

} // namespace quillmark::ctl
