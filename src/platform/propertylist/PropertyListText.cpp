#include "platform/propertylist/PropertyListText.h"

#include "platform/values/Base64.h"
#include "platform/values/Utf8Text.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <utf8.h>

namespace quillmark {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    const size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

bool isText(std::string_view raw) { return isUtf8(raw) && raw.find('\0') == std::string_view::npos; }

/// The character behind "#65" or "#x41".
std::optional<char32_t> characterReference(std::string_view reference) {
    const bool hexadecimal = reference.starts_with("#x");
    const std::string_view digits = reference.substr(hexadecimal ? 2 : 1);
    std::uint32_t code = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), code, hexadecimal ? 16 : 10);
    const bool isCharacter = code != 0 && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
    if (error != std::errc() || end != digits.end() || !isCharacter) {
        return std::nullopt;
    }
    return static_cast<char32_t>(code);
}

std::optional<char32_t> entity(std::string_view name) {
    struct Entity {
        std::string_view name;
        char32_t character;
    };
    static constexpr Entity kEntities[] = {{"amp", U'&'}, {"lt", U'<'}, {"gt", U'>'}, {"quot", U'"'}, {"apos", U'\''}};
    if (name.starts_with('#')) {
        return characterReference(name);
    }
    for (const Entity &known : kEntities) {
        if (known.name == name) {
            return known.character;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> propertyListString(std::string_view raw) {
    if (!isText(raw)) {
        return std::nullopt;
    }
    std::string text;
    for (size_t ampersand = 0; (ampersand = raw.find('&')) != std::string_view::npos;) {
        text += raw.substr(0, ampersand);
        raw.remove_prefix(ampersand + 1);
        const size_t semicolon = raw.find(';');
        const auto character = semicolon == std::string_view::npos ? std::nullopt : entity(raw.substr(0, semicolon));
        if (!character) {
            return std::nullopt;
        }
        utf8::append(*character, std::back_inserter(text));
        raw.remove_prefix(semicolon + 1);
    }
    return text.append(raw);
}

Value propertyListInteger(std::string_view raw) {
    std::string_view digits = trimmed(raw);
    const bool negative = digits.starts_with('-');
    if (negative || digits.starts_with('+')) {
        digits.remove_prefix(1);
    }
    int base = 10;
    if (digits.starts_with("0x") || digits.starts_with("0X")) {
        digits.remove_prefix(2);
        base = 16;
    }
    std::uint64_t magnitude = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), magnitude, base);
    if (error != std::errc() || end != digits.end()) {
        return {};
    }
    constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
    if (negative) {
        return magnitude > kLargest + 1 ? Value() : Value(static_cast<std::int64_t>(0 - magnitude));
    }
    return magnitude > kLargest ? Value(magnitude) : Value(static_cast<std::int64_t>(magnitude));
}

Value propertyListReal(std::string_view raw) {
    std::string_view digits = trimmed(raw);
    if (digits.starts_with('+') && !digits.starts_with("+-")) {
        digits.remove_prefix(1);
    }
    double value = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), value);
    if (error != std::errc() || end != digits.end()) {
        return {};
    }
    return value;
}

Value propertyListDate(std::string_view raw) {
    const std::string_view date = trimmed(raw);
    constexpr std::string_view kForm = "dddd-dd-ddTdd:dd:ddZ";
    if (date.size() != kForm.size()) {
        return {};
    }
    for (size_t i = 0; i < kForm.size(); ++i) {
        const bool isDigit = date[i] >= '0' && date[i] <= '9';
        if (kForm[i] == 'd' ? !isDigit : date[i] != kForm[i]) {
            return {};
        }
    }
    const auto number = [&date](size_t at, size_t length) {
        int value = 0;
        std::from_chars(date.data() + at, date.data() + at + length, value);
        return value;
    };
    const std::chrono::year_month_day day(std::chrono::year(number(0, 4)),
                                          std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                          std::chrono::day(static_cast<unsigned>(number(8, 2))));
    const int hour = number(11, 2);
    const int minute = number(14, 2);
    const int second = number(17, 2);
    if (!day.ok() || day.year() == std::chrono::year(0) || hour > 23 || minute > 59 || second > 59) {
        return {};
    }
    return Date(std::chrono::sys_days(day)) + std::chrono::hours(hour) + std::chrono::minutes(minute) +
           std::chrono::seconds(second);
}

Value propertyListData(std::string_view raw) {
    std::string encoded;
    encoded.reserve(raw.size());
    std::copy_if(raw.begin(), raw.end(), std::back_inserter(encoded),
                 [](char character) { return kBlanks.find(character) == std::string_view::npos; });
    auto bytes = bytesOfBase64(encoded);
    return bytes ? Value(Bytes{*std::move(bytes)}) : Value();
}

} // namespace quillmark
