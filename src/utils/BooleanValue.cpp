#include "utils/BooleanValue.h"

#include "platform/values/Value.h"
#include "platform/values/WhiteSpace.h"

namespace quillmark {

bool booleanValueOf(const Value &value) {
    if (const auto *text = value.as<std::string>()) {
        const std::string_view digits = trimmed(*text);
        const size_t first = digits.find_first_not_of('0');
        return first != std::string_view::npos &&
               std::string_view("YyTt123456789").find(digits[first]) != std::string_view::npos;
    }
    if (const auto *boolean = value.as<bool>()) {
        return *boolean;
    }
    if (const auto real = value.real()) {
        return *real != 0;
    }
    const auto *integer = value.as<std::int64_t>();
    return integer != nullptr ? *integer != 0 : value.is<std::uint64_t>(); // which is larger than any of those
}

} // namespace quillmark
