#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmark {

bool isUtf8(std::string_view bytes);

/// The text of UTF-8 bytes; absent when they are not valid.
std::optional<std::string> utf8Text(std::string bytes);

/// The same with U+FFFD in the place of each byte that does not belong to UTF-8: for what has to be shown whatever it
/// is.
std::string validText(std::string_view bytes);

/// How many characters of one byte it begins with. In most texts that is all of them.
size_t asciiLength(std::string_view bytes);

} // namespace quillmark
