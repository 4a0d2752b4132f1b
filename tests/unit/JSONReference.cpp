#include "JSONReference.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace quillmark::test {

namespace {

constexpr quint64 kWordFalse = 5;
constexpr quint64 kWordTrue = 4;

quint64 length(const QString &text) { return static_cast<quint64>(text.size()); }
QChar characterAt(const QString &text, quint64 at) { return text.at(static_cast<qsizetype>(at)); }

/// ASCII digits only; the digits of other scripts are characters like any other.
bool isDigit(QChar character) { return character >= u'0' && character <= u'9'; }

/// What the format "%c" leaves of a character.
void append(QString &result, QChar character) { result += QChar(character.unicode() & 0xFFU); }

QString printed(const char *format, double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return QString::fromLatin1(text.data());
}

QString valueText(const QVariant &value) {
    switch (value.typeId()) {
    case QMetaType::QString:
        return u'"' + JSONReference::stringByAddingJSONEscape(value.toString()) + u'"';
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QMetaType::Double:
        return printed("%0.16g", value.toDouble());
    case QMetaType::Float:
        return printed("%0.7g", static_cast<double>(value.toFloat()));
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return QString::number(value.toLongLong());
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return QString::number(value.toULongLong());
    default:
        return QStringLiteral("\"\"");
    }
}

} // namespace

QString JSONReference::createJSONStrFromDict(const QVariantMap &dictionary) {
    QString result = QStringLiteral("{");
    bool isFirst = true;
    for (auto member = dictionary.begin(); member != dictionary.end(); ++member) {
        if (!isFirst) {
            result += u',';
        }
        isFirst = false;
        result += u'"' + member.key() + u'"' + u':' + valueText(member.value());
    }
    return result + u'}';
}

std::optional<QVariantMap> JSONReference::createObjFromJSONStr(const QString &text) {
    if (text.isEmpty()) {
        return std::nullopt;
    }
    quint64 at = 0;
    bool error = false;
    std::optional<QVariantMap> dictionary;
    std::optional<QString> pendingKey;
    QVariant pendingValue;
    bool isKeyExpected = false;
    while (true) {
        if (at >= length(text) || error) {
            return std::nullopt;
        }
        const QChar character = characterAt(text, at);
        ++at;
        if (character == u'{') {
            dictionary = QVariantMap();
            isKeyExpected = true;
        } else if (character == u'"') {
            const std::optional<QString> string = jsonStringForStr(text, at, error);
            if (error || !string) {
                return std::nullopt;
            }
            if (isKeyExpected) {
                pendingKey = string;
            } else {
                pendingValue = *string;
            }
        } else if (character == u',') {
            if (!dictionary || dictionary->isEmpty()) {
                return std::nullopt;
            }
            isKeyExpected = true;
        } else if (character == u':') {
            if (!pendingKey || pendingKey->isEmpty()) {
                return std::nullopt;
            }
            isKeyExpected = false;
        } else if (character == u'}') {
            return dictionary;
        } else if (character == u'-' || isDigit(character)) {
            if (isKeyExpected) {
                return std::nullopt;
            }
            --at;
            pendingValue = jsonNumberForStr(text, at, error);
        } else if (character == u'f' || character == u'F') {
            if (isKeyExpected) {
                return std::nullopt;
            }
            const quint64 letter = at - 1;
            if (length(text) - letter < kWordFalse + 1) {
                return std::nullopt;
            }
            const QString word = text.mid(static_cast<qsizetype>(letter), kWordFalse);
            const bool matches = word.compare(QStringLiteral("false"), Qt::CaseInsensitive) == 0;
            pendingValue = !matches;
            at = letter + kWordFalse;
        } else if (character == u't' || character == u'T') {
            if (isKeyExpected) {
                return std::nullopt;
            }
            const quint64 letter = at - 1;
            if (length(text) - letter < kWordTrue + 1) {
                return std::nullopt;
            }
            const QString word = text.mid(static_cast<qsizetype>(letter), kWordTrue);
            const bool matches = word.compare(QStringLiteral("true"), Qt::CaseInsensitive) == 0;
            pendingValue = matches;
            at = letter + kWordTrue;
        }
        if (pendingKey && pendingValue.isValid()) {
            dictionary->insert(*pendingKey, pendingValue);
            pendingKey.reset();
            pendingValue.clear();
            isKeyExpected = false;
        }
    }
}

std::optional<QString> JSONReference::jsonStringForStr(const QString &text, quint64 &at, bool &error) {
    QString result;
    while (at < length(text)) {
        QChar character = characterAt(text, at);
        ++at;
        if (character == u'"') {
            return result;
        }
        if (character == u'\\') {
            if (at >= length(text)) {
                error = true;
                return std::nullopt;
            }
            character = characterAt(text, at);
            ++at;
            if (character == u'b') {
                character = QChar(8);
            } else if (character == u'f') {
                character = QChar(12);
            } else if (character == u'n') {
                character = QChar(10);
            } else if (character == u'r') {
                character = QChar(13);
            } else if (character == u't') {
                character = QChar(9);
            }
        }
        append(result, character);
    }
    return std::nullopt;
}

QVariant JSONReference::jsonNumberForStr(const QString &text, quint64 &at, bool &error) {
    quint64 integer = 0; // unsigned, so that it may wrap
    double fraction = 0;
    int place = 0;
    bool hasPoint = false;
    bool isNegative = false;
    while (at < length(text)) {
        const QChar character = characterAt(text, at);
        if (isDigit(character)) {
            const int digit = character.unicode() - u'0';
            if (hasPoint) {
                ++place;
                fraction += digit / std::pow(10.0, place);
            } else {
                integer = integer * 10 + static_cast<quint64>(digit);
            }
        } else if (character == u'.') {
            if (hasPoint) {
                error = true;
            } else {
                hasPoint = true;
                fraction = static_cast<double>(static_cast<qint64>(integer));
            }
        } else if (character == u'-') {
            isNegative = true;
        } else if (character != u'e') {
            break;
        }
        ++at;
    }
    if (error) {
        return {};
    }
    if (hasPoint) {
        return isNegative ? -fraction : fraction;
    }
    return static_cast<qlonglong>(isNegative ? 0 - integer : integer);
}

QString JSONReference::stringByAddingJSONEscape(const QString &text) {
    QString result = text;
    result.replace(QStringLiteral("\\"), QStringLiteral("\\\\"));
    result.replace(QStringLiteral("\""), QStringLiteral("\\\""));
    result.replace(QStringLiteral("/"), QStringLiteral("\\/"));
    result.replace(QStringLiteral("\b"), QStringLiteral("\\b"));
    result.replace(QStringLiteral("\f"), QStringLiteral("\\f"));
    result.replace(QStringLiteral("\n"), QStringLiteral("\\n"));
    result.replace(QStringLiteral("\r"), QStringLiteral("\\r"));
    result.replace(QStringLiteral("\t"), QStringLiteral("\\t"));
    return result;
}

QString JSONReference::stringByReplacingJSONEscape(const QString &text) {
    QString result = text;
    result.replace(QStringLiteral("\\\\"), QStringLiteral("\\"));
    result.replace(QStringLiteral("\\\""), QStringLiteral("\""));
    result.replace(QStringLiteral("\\/"), QStringLiteral("/"));
    result.replace(QStringLiteral("\\b"), QStringLiteral("\b"));
    result.replace(QStringLiteral("\\f"), QStringLiteral("\f"));
    result.replace(QStringLiteral("\\n"), QStringLiteral("\n"));
    result.replace(QStringLiteral("\\r"), QStringLiteral("\r"));
    result.replace(QStringLiteral("\\t"), QStringLiteral("\t"));
    return result;
}

} // namespace quillmark::test
