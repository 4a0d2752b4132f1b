#include "utils/IntegerValue.h"

#include "platform/values/Value.h"
#include "platform/values/WhiteSpace.h"

#include <limits>

namespace quillmark {

namespace {

using Limits = std::numeric_limits<std::int64_t>;

std::int64_t integerValue(double number) {
    constexpr double kBound = 9223372036854775808.0; // 2^63
    if (!(number > -kBound)) {                       // not a number included
        return number <= -kBound ? Limits::min() : 0;
    }
    return number < kBound ? static_cast<std::int64_t>(number) : Limits::max();
}

} // namespace

std::int64_t integerValue(std::string_view text) {
    constexpr std::uint64_t kLargest = Limits::max();
    std::string_view digits = trimmed(text);
    const bool isNegative = digits.starts_with('-');
    if (isNegative || digits.starts_with('+')) {
        digits.remove_prefix(1);
    }
    const std::uint64_t limit = isNegative ? kLargest + 1 : kLargest;
    std::uint64_t magnitude = 0;
    for (; !digits.empty() && digits.front() >= '0' && digits.front() <= '9'; digits.remove_prefix(1)) {
        const auto digit = static_cast<std::uint64_t>(digits.front() - '0');
        magnitude = magnitude > (limit - digit) / 10 ? limit : magnitude * 10 + digit;
    }
    return static_cast<std::int64_t>(isNegative ? 0 - magnitude : magnitude);
}

std::int64_t integerValueOf(const Value &value) {
    if (const auto *text = value.as<std::string>()) {
        return integerValue(*text);
    }
    if (const auto real = value.real()) {
        return integerValue(*real);
    }
    if (const auto *boolean = value.as<bool>()) {
        return *boolean ? 1 : 0;
    }
    const auto *integer = value.as<std::int64_t>();
    return integer != nullptr ? *integer : value.is<std::uint64_t>() ? Limits::max() : 0;
}

} // namespace quillmark
