#pragma once

#include <string_view>
#include <vector>

namespace quillmark {

/// What stands between the separators of a text, empty pieces as well: of an empty text one.
inline std::vector<std::string_view> pieces(std::string_view text, char separator) {
    std::vector<std::string_view> result;
    size_t end = 0;
    for (size_t begin = 0; end != std::string_view::npos; begin = end + 1) {
        end = text.find(separator, begin);
        result.push_back(text.substr(begin, end - begin));
    }
    return result;
}

} // namespace quillmark
