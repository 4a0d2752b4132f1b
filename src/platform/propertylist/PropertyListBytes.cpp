#include "platform/propertylist/PropertyListBytes.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utf8.h>

namespace quillmark {

Value integerFrom(std::optional<std::uint64_t> upper, std::optional<std::uint64_t> lower, std::int64_t width) {
    if (!lower || (width == 16 && !upper)) {
        return {};
    }
    if (width < 16) {
        return static_cast<std::int64_t>(*lower);
    }
    const bool isNegative = *upper == ~std::uint64_t{0} && (*lower >> 63) == 1;
    if (*upper == 0 && (*lower >> 63) == 1) {
        return *lower;
    }
    return *upper == 0 || isNegative ? Value(static_cast<std::int64_t>(*lower)) : Value();
}

Value dateFrom(double seconds) {
    constexpr std::int64_t kReference = 978307200;            // of 1 January 2001, since 1970
    constexpr double kLatest = 253402300800.0 - kReference;   // the year 10000
    constexpr double kEarliest = -62135596800.0 - kReference; // the year 1
    if (!(seconds >= kEarliest && seconds < kLatest)) {
        return {};
    }
    return Date(std::chrono::milliseconds(std::llround((seconds + kReference) * 1000)));
}

Value asciiTextFrom(std::string_view bytes) {
    const auto isAscii = [](char byte) { return static_cast<signed char>(byte) >= 0; };
    return std::all_of(bytes.begin(), bytes.end(), isAscii) ? Value(bytes) : Value();
}

Value utf16TextFrom(std::string_view bytes) {
    std::u16string characters;
    characters.reserve(bytes.size() / 2);
    for (size_t at = 0; at < bytes.size(); at += 2) {
        characters += static_cast<char16_t>(static_cast<unsigned char>(bytes[at]) << 8U |
                                            static_cast<unsigned char>(bytes[at + 1]));
    }
    try {
        std::string text;
        utf8::utf16to8(characters.begin(), characters.end(), std::back_inserter(text));
        return text;
    } catch (const utf8::invalid_utf16 &) {
        return {};
    }
}

} // namespace quillmark
