/// Answers what the product's property-list reader makes of documents, for tests that compare it with other readers.
///
/// A question on standard input is one letter, the document's length in four bytes, the highest first, and the
/// document. Each answer on standard output has its length in front in the same way:
///   r  "render": the value in a form that any language can make (see render()) and the XML that our writer makes of
///   it,
///      as two answers; empty ones where there is none
///   v  "verdict": "valid" or "invalid", so that the answer itself takes no memory

#include "platform/linux/LinuxPropertyList.h"

#include <QDateTime>
#include <QtEndian>
#include <bit>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace quillmark;

QByteArray quoted(const QString &text) {
    QByteArray out = "\"";
    for (const QChar character : text) {
        const char16_t code = character.unicode();
        if (code >= 0x20 && code < 0x7F && code != u'"' && code != u'\\') {
            out += static_cast<char>(code);
        } else {
            out += "\\u" + QByteArray::number(code, 16).rightJustified(4, '0');
        }
    }
    return out + '"';
}

/// One line: containers as in JSON, entries by their keys' UTF-16; "i5", "r" and a real's bits, "d" and the
/// milliseconds since 1970, "x" and the bytes, "true" and "false".
QByteArray render(const QVariant &value) {
    QByteArray out;
    switch (value.typeId()) {
    case QMetaType::QVariantMap: {
        const QVariantMap map = value.toMap();
        for (auto entry = map.begin(); entry != map.end(); ++entry) {
            out += (out.isEmpty() ? "" : ",") + quoted(entry.key()) + ':' + render(entry.value());
        }
        return '{' + out + '}';
    }
    case QMetaType::QVariantList: {
        const QVariantList list = value.toList();
        for (const QVariant &element : list) {
            out += (out.isEmpty() ? "" : ",") + render(element);
        }
        return '[' + out + ']';
    }
    case QMetaType::QString:
        return quoted(value.toString());
    case QMetaType::LongLong:
        return 'i' + QByteArray::number(value.toLongLong());
    case QMetaType::ULongLong:
        return 'i' + QByteArray::number(value.toULongLong());
    case QMetaType::Double:
        return 'r' + QByteArray::number(std::bit_cast<quint64>(value.toDouble()), 16).rightJustified(16, '0');
    case QMetaType::Bool:
        return value.toBool() ? "true" : "false";
    case QMetaType::QDateTime:
        return 'd' + QByteArray::number(value.toDateTime().toMSecsSinceEpoch());
    case QMetaType::QByteArray:
        return 'x' + value.toByteArray().toHex();
    default:
        return QByteArray("a value that no property list has: ") + value.typeName();
    }
}

bool readBytes(QByteArray &bytes) {
    const auto size = static_cast<size_t>(bytes.size());
    return std::fread(bytes.data(), 1, size, stdin) == size;
}

void answer(const QByteArray &text) {
    QByteArray length(4, '\0');
    qToBigEndian(static_cast<quint32>(text.size()), length.data());
    for (const QByteArray &piece : {length, text}) {
        std::fwrite(piece.constData(), 1, static_cast<size_t>(piece.size()), stdout);
    }
}

} // namespace

int main() {
    const LinuxPropertyList propertyList;
    QByteArray question(5, '\0');
    while (readBytes(question)) {
        QByteArray document(qFromBigEndian<qint32>(question.constData() + 1), Qt::Uninitialized);
        if (!readBytes(document)) {
            return EXIT_FAILURE;
        }
        const QVariant value = propertyList.parse(std::move(document));
        if (question.startsWith('v')) {
            answer(value.isValid() ? "valid" : "invalid");
        } else {
            answer(value.isValid() ? render(value) : QByteArray());
            answer(value.isValid() ? propertyList.toXml(value).value_or(QByteArray()) : QByteArray());
        }
        std::fflush(stdout);
    }
    return EXIT_SUCCESS;
}
