#include "JSONReference.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <utf8.h>
#include <utility>

namespace quillmark::test {

namespace {

/// Characters and their escapes, in the order in which a text is searched for them.
constexpr std::pair<std::string_view, std::string_view> kEscapes[] = {{"\\", "\\\\"}, {"\"", "\\\""}, {"/", "\\/"},
                                                                      {"\b", "\\b"},  {"\f", "\\f"},  {"\n", "\\n"},
                                                                      {"\r", "\\r"},  {"\t", "\\t"}};

/// ASCII digits only; the digits of other scripts are characters like any other.
bool isDigit(char16_t character) { return character >= u'0' && character <= u'9'; }

/// What the format "%c" leaves of a character, in UTF-8.
void append(std::string &result, char16_t character) { utf8::append(character & 0xFFU, std::back_inserter(result)); }

/// Whether these are the letters of the word but for their case, in which the long s is an s as well.
bool isWord(std::u16string letters, std::u16string_view word) {
    std::transform(letters.begin(), letters.end(), letters.begin(), [](char16_t letter) {
        const bool isCapital = letter >= u'A' && letter <= u'Z';
        return letter == u'\u017F' ? u's' : static_cast<char16_t>(isCapital ? letter + (u'a' - u'A') : letter);
    });
    return letters == word;
}

std::string printed(const char *format, double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

std::string valueText(const Value &value) {
    if (const auto *text = value.as<std::string>()) {
        return '"' + JSONReference::stringByAddingJSONEscape(*text) + '"';
    }
    if (const auto *boolean = value.as<bool>()) {
        return *boolean ? "true" : "false";
    }
    if (const auto *real = value.as<double>()) {
        return printed("%0.16g", *real);
    }
    if (const auto *single = value.as<float>()) {
        return printed("%0.7g", static_cast<double>(*single));
    }
    if (const auto *integer = value.as<std::int64_t>()) {
        return std::to_string(*integer);
    }
    if (const auto *large = value.as<std::uint64_t>()) {
        return std::to_string(*large);
    }
    return "\"\"";
}

void replace(std::string &text, std::string_view what, std::string_view by) {
    for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) {
        text.replace(at, what.size(), by);
    }
}

} // namespace

std::string JSONReference::createJSONStrFromDict(const Dictionary &dictionary) {
    std::string result = "{";
    for (const auto &[key, value] : dictionary) {
        result += (result == "{" ? "\"" : ",\"") + key + "\":" + valueText(value);
    }
    return result + '}';
}

std::optional<Dictionary> JSONReference::createObjFromJSONStr(std::u16string_view text) {
    if (text.empty()) {
        return std::nullopt;
    }
    std::uint64_t at = 0;
    bool error = false;
    std::optional<Dictionary> dictionary;
    std::optional<std::string> pendingKey;
    Value pendingValue;
    bool isKeyExpected = false;
    while (true) {
        if (at >= text.size() || error) {
            return std::nullopt;
        }
        const char16_t character = text[at];
        ++at;
        if (character == u'{') {
            dictionary = Dictionary();
            isKeyExpected = true;
        } else if (character == u'"') {
            const std::optional<std::string> string = jsonStringForStr(text, at, error);
            if (error || !string) {
                return std::nullopt;
            }
            if (isKeyExpected) {
                pendingKey = string;
            } else {
                pendingValue = *string;
            }
        } else if (character == u',') {
            if (!dictionary || dictionary->empty()) {
                return std::nullopt;
            }
            isKeyExpected = true;
        } else if (character == u':') {
            if (!pendingKey || pendingKey->empty()) {
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
        } else if (character == u'f' || character == u'F' || character == u't' || character == u'T') {
            const bool isTrue = character == u't' || character == u'T';
            const std::u16string_view word = isTrue ? u"true" : u"false";
            const std::uint64_t letter = at - 1;
            if (isKeyExpected || text.size() - letter < word.size() + 1) {
                return std::nullopt;
            }
            pendingValue = isWord(std::u16string(text.substr(letter, word.size())), word) == isTrue;
            at = letter + word.size();
        }
        if (pendingKey && !pendingValue.isNothing()) {
            dictionary->insert_or_assign(*pendingKey, pendingValue);
            pendingKey.reset();
            pendingValue = Value();
            isKeyExpected = false;
        }
    }
}

std::optional<std::string> JSONReference::jsonStringForStr(std::u16string_view text, std::uint64_t &at, bool &error) {
    std::string result;
    while (at < text.size()) {
        char16_t character = text[at];
        ++at;
        if (character == u'"') {
            return result;
        }
        if (character == u'\\') {
            if (at >= text.size()) {
                error = true;
                return std::nullopt;
            }
            character = text[at];
            ++at;
            constexpr std::u16string_view kLetters = u"bfnrt";
            if (const size_t letter = kLetters.find(character); letter != std::u16string_view::npos) {
                character = u"\b\f\n\r\t"[letter];
            }
        }
        append(result, character);
    }
    return std::nullopt;
}

Value JSONReference::jsonNumberForStr(std::u16string_view text, std::uint64_t &at, bool &error) {
    std::uint64_t integer = 0; // unsigned, so that it may wrap
    double fraction = 0;
    int place = 0;
    bool hasPoint = false;
    bool isNegative = false;
    while (at < text.size()) {
        const char16_t character = text[at];
        if (isDigit(character)) {
            const int digit = character - u'0';
            if (hasPoint) {
                ++place;
                fraction += digit / std::pow(10.0, place);
            } else {
                integer = integer * 10 + static_cast<std::uint64_t>(digit);
            }
        } else if (character == u'.') {
            if (hasPoint) {
                error = true;
            } else {
                hasPoint = true;
                fraction = static_cast<double>(static_cast<std::int64_t>(integer));
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
    return static_cast<std::int64_t>(isNegative ? 0 - integer : integer);
}

std::string JSONReference::stringByAddingJSONEscape(std::string_view text) {
    std::string result(text);
    for (const auto &[character, escape] : kEscapes) {
        replace(result, character, escape);
    }
    return result;
}

std::string JSONReference::stringByReplacingJSONEscape(std::string_view text) {
    std::string result(text);
    for (const auto &[character, escape] : kEscapes) {
        replace(result, escape, character);
    }
    return result;
}

} // namespace quillmark::test
