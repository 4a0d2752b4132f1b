#pragma once

#include <string>
#include <string_view>

namespace quillmark {

/// The 16-bit characters of a text, which some of the product's rules count, cut and escape. What is no UTF-8 becomes
/// U+FFFD.
std::u16string utf16(std::string_view text);

} // namespace quillmark
