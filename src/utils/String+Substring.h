#pragma once

#include <string_view>

namespace quillmark {

/// True when `other` occurs in `text`, whatever the letter case. An empty text occurs nowhere.
bool hasCaseInsensitiveSubstring(std::string_view text, std::string_view other);

} // namespace quillmark
