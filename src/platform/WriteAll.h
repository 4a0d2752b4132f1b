#pragma once

#include <string_view>

namespace quillmark {

/// Writes all the bytes to an open file. \returns false, with `errno`, when that can't be.
bool writeAll(int file, std::string_view bytes);

} // namespace quillmark
