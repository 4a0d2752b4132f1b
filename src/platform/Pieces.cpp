#include "platform/Pieces.h"

namespace quillmark {

std::vector<std::string_view> pieces(std::string_view text, char separator) {
    std::vector<std::string_view> result;
    size_t end = 0;
    for (size_t begin = 0; end != std::string_view::npos; begin = end + 1) {
        end = text.find(separator, begin);
        result.push_back(text.substr(begin, end - begin));
    }
    return result;
}

} // namespace quillmark
