#include "accounts/JSONEncoder.h"

#include "utils/ReplaceAll.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace quillmark {

namespace {

constexpr char kBackslash = '\\';

struct Escape {
    char character;
    char letter; ///< behind the backslash
};

/// In the order in which they are undone.
constexpr std::array kEscapes{Escape{kBackslash, kBackslash},
                              Escape{'"', '"'},
                              Escape{'/', '/'},
                              Escape{'\b', 'b'},
                              Escape{'\f', 'f'},
                              Escape{'\n', 'n'},
                              Escape{'\r', 'r'},
                              Escape{'\t', 't'}};

/// The letter that stands behind the backslash for a character, else 0.
char letterFor(char character) {
    const auto *const escape = std::find_if(kEscapes.begin(), kEscapes.end(), [character](const Escape &candidate) {
        return candidate.character == character;
    });
    return escape != kEscapes.end() ? escape->letter : '\0';
}

void appendEscaped(std::string &result, std::string_view text) {
    for (const char character : text) {
        const char letter = letterFor(character);
        if (letter != '\0') {
            result += kBackslash;
        }
        result += letter != '\0' ? letter : character;
    }
}

/// Integers, and reals in so many digits as printf's "%g" writes them.
template <class Number, class... Form>
void appendNumber(std::string &result, Number number, Form... form) {
    std::array<char, 32> text; // NOLINT(cppcoreguidelines-pro-type-member-init): written by what follows
    const auto written = std::to_chars(text.data(), text.data() + text.size(), number, form...);
    result.append(text.data(), written.ptr);
}

void appendValue(std::string &result, const Value &value) {
    constexpr int kDigits = 16; // of a double in decimal
    constexpr int kSingleDigits = 7;
    if (const auto *text = value.as<std::string>()) {
        result += '"';
        appendEscaped(result, *text);
        result += '"';
    } else if (const auto *boolean = value.as<bool>()) {
        result += *boolean ? "true" : "false";
    } else if (const auto *integer = value.as<std::int64_t>()) {
        appendNumber(result, *integer);
    } else if (const auto *large = value.as<std::uint64_t>()) {
        appendNumber(result, *large);
    } else if (const auto *real = value.as<double>()) {
        appendNumber(result, *real, std::chars_format::general, kDigits);
    } else if (const auto *single = value.as<float>()) {
        appendNumber(result, static_cast<double>(*single), std::chars_format::general, kSingleDigits);
    } else {
        result += R"("")";
    }
}

} // namespace

std::string JSONEncoder::createJSONStrFromDict(const Dictionary &dictionary) {
    std::string result = "{";
    for (const auto &[key, value] : dictionary) {
        result += result.size() > 1 ? ",\"" : "\"";
        result += key;
        result += "\":";
        appendValue(result, value);
    }
    result += '}';
    return result;
}

std::string JSONEncoder::stringByAddingJSONEscape(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    appendEscaped(result, text);
    return result;
}

std::string JSONEncoder::stringByReplacingJSONEscape(std::string_view text) {
    std::string result(text);
    for (const Escape &escape : kEscapes) {
        replaceAll(result, std::string{kBackslash, escape.letter}, std::string{escape.character});
    }
    return result;
}

} // namespace quillmark
