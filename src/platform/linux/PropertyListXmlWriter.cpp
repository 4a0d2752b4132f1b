#include "platform/linux/LinuxPropertyList.h"

#include <QDateTime>
#include <QLocale>
#include <cmath>

namespace quillmark {

namespace {

bool isXmlText(const QString &text) {
    if (!text.isValidUtf16()) {
        return false;
    }
    return std::all_of(text.begin(), text.end(), [](QChar character) {
        const char16_t code = character.unicode();
        const bool isControl = code < 0x20 && code != u'\t' && code != u'\n' && code != u'\r';
        return !isControl && code != 0xFFFE && code != 0xFFFF;
    });
}

class XmlWriter {
public:
    bool value(const QVariant &value, int depth);
    QByteArray out;

private:
    bool text(const char *tag, const QString &text, int depth);
    bool line(const char *tag, const QByteArray &content, int depth);
    bool dictionary(const QVariantMap &map, int depth);
    bool array(const QVariantList &list, int depth);
    void indent(int depth) { out.append(depth, '\t'); }
};

bool XmlWriter::line(const char *tag, const QByteArray &content, int depth) {
    indent(depth);
    out += '<' + QByteArray(tag) + '>' + content + "</" + tag + ">\n";
    return true;
}

bool XmlWriter::text(const char *tag, const QString &text, int depth) {
    if (!isXmlText(text)) {
        return false;
    }
    QByteArray escaped = text.toUtf8();
    escaped.replace('&', "&amp;").replace('<', "&lt;").replace('>', "&gt;");
    escaped.replace('\r', "&#13;"); // a bare one would be read as a line feed
    return line(tag, escaped, depth);
}

bool XmlWriter::dictionary(const QVariantMap &map, int depth) {
    if (depth >= PropertyList::kMaximumDepth) {
        return false;
    }
    if (map.isEmpty()) {
        indent(depth);
        out += "<dict/>\n";
        return true;
    }
    indent(depth);
    out += "<dict>\n";
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
        if (!text("key", entry.key(), depth + 1) || !value(entry.value(), depth + 1)) {
            return false;
        }
    }
    indent(depth);
    out += "</dict>\n";
    return true;
}

bool XmlWriter::array(const QVariantList &list, int depth) {
    if (depth >= PropertyList::kMaximumDepth) {
        return false;
    }
    indent(depth);
    if (list.isEmpty()) {
        out += "<array/>\n";
        return true;
    }
    out += "<array>\n";
    for (const QVariant &element : list) {
        if (!value(element, depth + 1)) {
            return false;
        }
    }
    indent(depth);
    out += "</array>\n";
    return true;
}

QByteArray realText(double real) {
    if (std::isnan(real)) {
        return "nan";
    }
    if (real == 0 && std::signbit(real)) {
        return "-0.0"; // the number's text below has no sign for it
    }
    if (std::isinf(real)) {
        return real < 0 ? "-inf" : "inf";
    }
    return QByteArray::number(real, 'g', QLocale::FloatingPointShortest);
}

bool XmlWriter::value(const QVariant &value, int depth) {
    switch (value.typeId()) {
    case QMetaType::QVariantMap:
        return dictionary(value.toMap(), depth);
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return array(value.toList(), depth);
    case QMetaType::QString:
        return text("string", value.toString(), depth);
    case QMetaType::Bool:
        indent(depth);
        out += value.toBool() ? "<true/>\n" : "<false/>\n";
        return true;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        return line("integer", QByteArray::number(value.toLongLong()), depth);
    case QMetaType::ULongLong:
        return line("integer", QByteArray::number(value.toULongLong()), depth);
    case QMetaType::Float:
    case QMetaType::Double:
        return line("real", realText(value.toDouble()), depth);
    case QMetaType::QDateTime: {
        const QDateTime date = value.toDateTime().toUTC();
        const int year = date.date().year();
        return date.isValid() && year >= 1 && year <= 9999 &&
               line("date", date.toString(u"yyyy-MM-ddTHH:mm:ssZ").toLatin1(), depth);
    }
    case QMetaType::QByteArray:
        return line("data", value.toByteArray().toBase64(), depth);
    default:
        return false;
    }
}

} // namespace

std::optional<QByteArray> writeXmlPropertyList(const QVariant &value) {
    XmlWriter writer;
    writer.out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                 "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                 "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                 "<plist version=\"1.0\">\n";
    if (!writer.value(value, 0)) {
        return std::nullopt;
    }
    writer.out += "</plist>\n";
    return writer.out;
}

} // namespace quillmark
