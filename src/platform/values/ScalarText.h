#pragma once

#include <optional>
#include <string>

namespace quillmark {

class Value;

/// The shortest decimal number that reads back as the same one, with an exponent where that makes it shorter: "0.1",
/// "1e+100". Digits beyond the precision are zeros, and a zero has no sign.
std::string realText(double real);

/// A text, a number or a boolean ("true", "false") as a text; absent for any other value.
std::optional<std::string> scalarText(const Value &value);

} // namespace quillmark
