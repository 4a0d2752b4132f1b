#pragma once

#include <string_view>
#include <vector>

namespace quillmark {

/// What stands between the separators of a text, empty pieces as well: of an empty text one.
std::vector<std::string_view> pieces(std::string_view text, char separator);

} // namespace quillmark
