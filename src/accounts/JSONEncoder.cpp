#include "accounts/JSONEncoder.h"

#include <QVarLengthArray>
#include <array>
#include <charconv>
#include <cmath>
#include <map>

namespace quillmark {

namespace {

constexpr char16_t kBackslash = u'\\';

struct Escape {
    char16_t character;
    char16_t letter; ///< behind the backslash
};

/// In the order in which they are undone.
constexpr std::array kEscapes{Escape{kBackslash, kBackslash},
                              Escape{u'"', u'"'},
                              Escape{u'/', u'/'},
                              Escape{u'\b', u'b'},
                              Escape{u'\f', u'f'},
                              Escape{u'\n', u'n'},
                              Escape{u'\r', u'r'},
                              Escape{u'\t', u't'}};

/// Past this one no character is escaped.
constexpr char16_t kLastEscaped = kBackslash;

quint64 lengthOf(QStringView text) { return static_cast<quint64>(text.size()); }
QChar characterAt(QStringView text, quint64 at) { return text[static_cast<qsizetype>(at)]; }

bool isDigit(QChar character) { return character >= u'0' && character <= u'9'; }

/// The letter that stands behind the backslash for a character, else 0.
char16_t letterFor(char16_t character) {
    for (const Escape &escape : kEscapes) {
        if (escape.character == character) {
            return escape.letter;
        }
    }
    return 0;
}

void appendEscaped(QString &result, QStringView text) {
    for (const QChar character : text) {
        const char16_t letter = character <= kLastEscaped ? letterFor(character.unicode()) : u'\0';
        if (letter != 0) {
            result += QChar(kBackslash);
        }
        result += letter != 0 ? QChar(letter) : character;
    }
}

/// What a backslash and the character behind it stand for.
QChar unescaped(QChar letter) {
    switch (letter.unicode()) {
    case u'b':
        return u'\b';
    case u'f':
        return u'\f';
    case u'n':
        return u'\n';
    case u'r':
        return u'\r';
    case u't':
        return u'\t';
    default: // deliberate: itself, a "u" as well
        return letter;
    }
}

double powerOfTen(int exponent) {
    static constexpr std::array kExact{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                       1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const auto index = static_cast<size_t>(exponent);
    return index < kExact.size() ? kExact[index] : std::pow(10, exponent);
}

/// Integers, and reals in so many digits as printf's "%g" writes them: a tie goes to the even digit, which
/// QString::number() rounds up.
template <class Number, class... Form>
void appendNumber(QString &result, Number number, Form... form) {
    std::array<char, 32> text; // NOLINT(cppcoreguidelines-pro-type-member-init): written by what follows
    const auto written = std::to_chars(text.data(), text.data() + text.size(), number, form...);
    result += QLatin1StringView(text.data(), written.ptr - text.data());
}

void appendValue(QString &result, const QVariant &value) {
    constexpr int kDigits = 16; // of a double in decimal
    constexpr int kSingleDigits = 7;
    switch (value.typeId()) {
    case QMetaType::QString:
        result += u'"';
        appendEscaped(result, value.toString());
        result += u'"';
        break;
    case QMetaType::Bool:
        result += value.toBool() ? QStringView(u"true") : QStringView(u"false");
        break;
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
        appendNumber(result, value.toLongLong());
        break;
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
    case QMetaType::UShort:
        appendNumber(result, value.toULongLong());
        break;
    case QMetaType::Double:
        appendNumber(result, value.toDouble(), std::chars_format::general, kDigits);
        break;
    case QMetaType::Float:
        appendNumber(result, value.toDouble(), std::chars_format::general, kSingleDigits);
        break;
    default:
        result += QStringView(u"\"\"");
    }
}

/// One left-to-right scan over a text.
class Reader {
public:
    explicit Reader(QStringView text) : m_text(text) {}

    std::optional<QVariantMap> object() {
        while (m_at < lengthOf(m_text) && !m_error) {
            const QChar character = characterAt(m_text, m_at++);
            if (character == u'}') {
                return m_members ? std::optional(QVariantMap(std::move(*m_members))) : std::nullopt;
            }
            if (!readsOn(character)) {
                return std::nullopt;
            }
            storeMember();
        }
        return std::nullopt;
    }

private:
    /// \returns false when the scan has failed.
    bool readsOn(QChar character) {
        switch (character.unicode()) {
        case u'{': // deliberate: a nested object discards what was read before it
            m_members.emplace();
            m_isKeyExpected = true;
            return true;
        case u'"':
            return readString();
        case u',':
            m_isKeyExpected = true;
            return m_members && !m_members->empty();
        case u':':
            m_isKeyExpected = false;
            return m_key && !m_key->isEmpty();
        case u'f':
        case u'F':
            return readWord(u"false", false);
        case u't':
        case u'T':
            return readWord(u"true", true);
        default:
            return character == u'-' || isDigit(character) ? readNumber() : true;
        }
    }

    bool readString() {
        std::optional<QString> text = JSONEncoder::jsonStringForStr(m_text, m_at, m_error);
        if (!text) {
            return false;
        }
        if (m_isKeyExpected) {
            m_key = std::move(text);
        } else {
            m_value.emplace(*text);
        }
        return true;
    }

    bool readNumber() {
        --m_at;
        if (!m_isKeyExpected) {
            m_value.emplace(JSONEncoder::jsonNumberForStr(m_text, m_at, m_error));
        }
        return !m_isKeyExpected;
    }

    /// Deliberate: any word of that length is read as the opposite, and one more character has to follow.
    bool readWord(QStringView word, bool meaning) {
        const QStringView rest = m_text.sliced(static_cast<qsizetype>(m_at) - 1);
        if (m_isKeyExpected || rest.size() <= word.size()) {
            return false;
        }
        const bool isWord = rest.first(word.size()).compare(word, Qt::CaseInsensitive) == 0;
        m_value.emplace(isWord ? meaning : !meaning);
        m_at += static_cast<quint64>(word.size()) - 1;
        return true;
    }

    void storeMember() {
        if (m_key && m_value) {
            m_members->insert_or_assign(m_members->cend(), std::move(*m_key), std::move(*m_value));
            m_key.reset();
            m_value.reset();
            m_isKeyExpected = false;
        }
    }

    const QStringView m_text;
    quint64 m_at = 0;
    bool m_error = false;
    /// What a QVariantMap is made of: unlike that one it takes over what is moved.
    std::optional<std::map<QString, QVariant>> m_members;
    std::optional<QString> m_key;    ///< read, and without a value yet
    std::optional<QVariant> m_value; ///< read, and without a key yet
    bool m_isKeyExpected = false;
};

} // namespace

QString JSONEncoder::createJSONStrFromDict(const QVariantMap &dictionary) {
    QString result(u'{');
    for (auto member = dictionary.cbegin(); member != dictionary.cend(); ++member) {
        result += result.size() > 1 ? QStringView(u",\"") : QStringView(u"\"");
        result += member.key();
        result += QStringView(u"\":");
        appendValue(result, member.value());
    }
    result += u'}';
    return result;
}

std::optional<QVariantMap> JSONEncoder::createObjFromJSONStr(QStringView text) { return Reader(text).object(); }

std::optional<QString> JSONEncoder::jsonStringForStr(QStringView text, quint64 &at, bool &error) {
    QVarLengthArray<QChar, 256> result; // which most texts fit in: they are copied once, when their length is known
    while (at < lengthOf(text)) {
        QChar character = characterAt(text, at++);
        if (character == u'"') {
            return QString(result.constData(), result.size());
        }
        if (character == kBackslash) {
            if (at == lengthOf(text)) {
                error = true;
                break;
            }
            character = unescaped(characterAt(text, at++));
        }
        result.append(QLatin1Char(static_cast<char>(character.cell()))); // deliberate: the lower byte alone
    }
    return std::nullopt;
}

QVariant JSONEncoder::jsonNumberForStr(QStringView text, quint64 &at, bool &error) {
    quint64 integer = 0;
    double number = 0;
    int place = 0;
    bool hasPoint = false;
    bool isNegative = false;
    for (; at < lengthOf(text); ++at) {
        const QChar character = characterAt(text, at);
        if (isDigit(character) && hasPoint) {
            number += (character.unicode() - u'0') / powerOfTen(++place);
        } else if (isDigit(character)) {
            integer = integer * 10 + (character.unicode() - u'0');
        } else if (character == u'.') {
            error = error || hasPoint;
            hasPoint = true;
            number = static_cast<double>(static_cast<qint64>(integer));
        } else if (character == u'-') {
            isNegative = true;          // deliberate: wherever it stands
        } else if (character != u'e') { // deliberate: an exponent's digits are the number's own
            break;
        }
    }
    if (error) {
        return {};
    }
    if (hasPoint) {
        return isNegative ? -number : number;
    }
    return QVariant::fromValue(static_cast<qlonglong>(isNegative ? 0 - integer : integer));
}

QString JSONEncoder::stringByAddingJSONEscape(QStringView text) {
    QString result;
    result.reserve(text.size());
    appendEscaped(result, text);
    return result;
}

QString JSONEncoder::stringByReplacingJSONEscape(const QString &text) {
    QString result = text;
    for (const Escape &escape : kEscapes) {
        const std::array sequence{QChar(kBackslash), QChar(escape.letter)};
        const QChar character(escape.character);
        result.replace(sequence.data(), sequence.size(), &character, 1);
    }
    return result;
}

} // namespace quillmark
