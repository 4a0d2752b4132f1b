#include "platform/values/ScalarText.h"

#include "platform/values/Value.h"

#include <array>
#include <charconv>
#include <cmath>

namespace quillmark {

namespace {

template <class... Form>
std::string numberText(double number, Form... form) {
    std::array<char, 32> text; // NOLINT(cppcoreguidelines-pro-type-member-init): written by what follows
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number, form...).ptr};
}

} // namespace

std::string realText(double real) {
    if (real == 0) {
        return "0"; // whatever its sign
    }
    if (std::isnan(real)) {
        return "nan";
    }
    std::string text = numberText(real);
    constexpr size_t kExactDigits = 16; // which every integer of so many has
    if (text.size() > kExactDigits && text.find_first_not_of("-0123456789") == std::string::npos) {
        // A large integer is printed to its last digit; those that matter stand before the exponent.
        std::string digits = numberText(real, std::chars_format::scientific);
        digits.erase(digits.find('e'));
        std::erase(digits, '.');
        digits.append(text.size() - digits.size(), '0');
        return digits;
    }
    return text;
}

std::optional<std::string> scalarText(const Value &value) {
    if (const auto *boolean = value.as<bool>()) {
        return *boolean ? "true" : "false";
    }
    if (const auto *integer = value.as<std::int64_t>()) {
        return std::to_string(*integer);
    }
    if (const auto *large = value.as<std::uint64_t>()) {
        return std::to_string(*large);
    }
    const auto real = value.real();
    return real ? realText(*real) : value.text();
}

} // namespace quillmark
