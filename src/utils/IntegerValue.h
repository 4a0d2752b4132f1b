#pragma once

#include <cstdint>
#include <string_view>

namespace quillmark {

class Value;

/// The number that a text begins with: white space, a sign, digits; what follows is passed over. 0 without a digit; the
/// nearest number when it is beyond 64 bits.
std::int64_t integerValue(std::string_view text);

/// A number cut to an integer, or the number that a text begins with; 0 for anything else.
std::int64_t integerValueOf(const Value &value);

} // namespace quillmark
