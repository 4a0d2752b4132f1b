#include "accounts/JSONEncoder.h"

#include "utils/Utf16.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace quillmark {

namespace {

/// Whether a character in a text stands for itself, and is one byte.
bool isPlain(char16_t character) { return character < 0x80 && character != u'"' && character != u'\\'; }

bool isDigit(char16_t character) { return character >= u'0' && character <= u'9'; }

/// What a backslash and the character behind it stand for.
char16_t unescaped(char16_t letter) {
    switch (letter) {
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

/// The character whose code is the lower byte.
void appendLowerByte(std::string &result, char16_t character) {
    const unsigned code = character & 0xFFU;
    if (code < 0x80) {
        result += static_cast<char>(code);
    } else {
        result += static_cast<char>(0xC0U | code >> 6U);
        result += static_cast<char>(0x80U | (code & 0x3FU));
    }
}

double powerOfTen(int exponent) {
    static constexpr std::array kExact{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                       1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const auto index = static_cast<size_t>(exponent);
    return index < kExact.size() ? kExact[index] : std::pow(10, exponent);
}

/// One left-to-right scan over a text.
class Reader {
public:
    explicit Reader(std::u16string_view text) : m_text(text) {
        constexpr size_t kUsualLength = 16; // of a member
        m_members.reserve(text.size() / kUsualLength);
    }

    std::optional<Dictionary> object() {
        while (m_at < m_text.size() && !m_error) {
            const char16_t character = m_text[m_at++];
            if (character == u'}') {
                return m_isOpen ? std::optional<Dictionary>(std::move(m_members)) : std::nullopt;
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
    bool readsOn(char16_t character) {
        switch (character) {
        case u'{': // deliberate: a nested object discards what was read before it
            m_isOpen = true;
            m_members.clear();
            m_isKeyExpected = true;
            return true;
        case u'"':
            return readString();
        case u',':
            m_isKeyExpected = true;
            return !m_members.empty();
        case u':':
            m_isKeyExpected = false;
            return m_key && !m_key->empty();
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
        std::optional<std::string> text = JSONEncoder::jsonStringForStr(m_text, m_at, m_error);
        if (!text) {
            return false;
        }
        if (m_isKeyExpected) {
            m_key = std::move(text);
        } else {
            m_value.emplace(std::move(*text));
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
    bool readWord(std::u16string_view word, bool meaning) {
        const std::u16string_view rest = m_text.substr(m_at - 1);
        if (m_isKeyExpected || rest.size() <= word.size()) {
            return false;
        }
        const bool isWord = std::equal(word.begin(), word.end(), rest.begin(), isLetter);
        m_value.emplace(isWord ? meaning : !meaning);
        m_at += word.size() - 1;
        return true;
    }

    /// Whether a character is that small letter, but for its case: the long s is an s as well.
    static bool isLetter(char16_t letter, char16_t character) {
        const bool isCapital = character >= u'A' && character <= u'Z';
        return letter == (isCapital ? character - u'A' + u'a' : character == u'\u017F' ? u's' : character);
    }

    void storeMember() {
        if (m_key && m_value) {
            m_members.emplace_back(std::move(*m_key), std::move(*m_value));
            m_key.reset();
            m_value.reset();
            m_isKeyExpected = false;
        }
    }

    const std::u16string_view m_text;
    std::uint64_t m_at = 0;
    bool m_error = false;
    std::vector<Dictionary::value_type> m_members;
    bool m_isOpen = false;
    std::optional<std::string> m_key; ///< read, and without a value yet
    std::optional<Value> m_value;     ///< read, and without a key yet
    bool m_isKeyExpected = false;
};

} // namespace

std::optional<Dictionary> JSONEncoder::createObjFromJSONStr(std::string_view text) {
    return createObjFromJSONStr(utf16(text));
}

std::optional<Dictionary> JSONEncoder::createObjFromJSONStr(std::u16string_view text) { return Reader(text).object(); }

std::optional<std::string> JSONEncoder::jsonStringForStr(std::u16string_view text, std::uint64_t &at, bool &error) {
    std::string result;
    std::array<char, 64> piece; // NOLINT(cppcoreguidelines-pro-type-member-init): written by what follows
    size_t filled = 0;          // to append piece by piece takes less time than byte by byte
    while (at < text.size()) {
        char16_t character = text[at++];
        if (isPlain(character)) {
            piece[filled++] = static_cast<char>(character);
            if (filled == piece.size()) {
                result.append(piece.data(), std::exchange(filled, 0));
            }
            continue;
        }
        result.append(piece.data(), std::exchange(filled, 0));
        if (character == u'"') {
            return result;
        }
        if (character == u'\\') {
            if (at == text.size()) {
                error = true;
                break;
            }
            character = unescaped(text[at++]);
        }
        appendLowerByte(result, character); // deliberate: the upper one is lost
    }
    return std::nullopt;
}

Value JSONEncoder::jsonNumberForStr(std::u16string_view text, std::uint64_t &at, bool &error) {
    std::uint64_t integer = 0;
    double number = 0;
    int place = 0;
    bool hasPoint = false;
    bool isNegative = false;
    for (; at < text.size(); ++at) {
        const char16_t character = text[at];
        if (isDigit(character) && hasPoint) {
            number += (character - u'0') / powerOfTen(++place);
        } else if (isDigit(character)) {
            integer = integer * 10 + static_cast<std::uint64_t>(character - u'0');
        } else if (character == u'.') {
            error = error || hasPoint;
            hasPoint = true;
            number = static_cast<double>(static_cast<std::int64_t>(integer));
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
    return static_cast<std::int64_t>(isNegative ? 0 - integer : integer);
}

} // namespace quillmark
