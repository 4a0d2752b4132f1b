#include "Command.h"

#include <QJsonDocument>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace quillmark::ctl {

namespace {

void write(const QByteArray &bytes) {
    const auto length = static_cast<size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, length, stdout) != length || std::fflush(stdout) != 0) {
        throw Failure{QStringLiteral("standard output"), QString::fromLocal8Bit(std::strerror(errno))}; // NOLINT
    }
}

QByteArray lineOf(const QJsonDocument &document, bool isPretty) {
    const QByteArray text = document.toJson(isPretty ? QJsonDocument::Indented : QJsonDocument::Compact);
    return text.endsWith('\n') ? text : text + '\n';
}

} // namespace

void Output::line(const QString &text) { write(text.toUtf8() + '\n'); }
void Output::json(const QJsonArray &array) { write(lineOf(QJsonDocument(array), m_isPretty)); }
void Output::json(const QJsonObject &object) { write(lineOf(QJsonDocument(object), m_isPretty)); }

} // namespace quillmark::ctl
