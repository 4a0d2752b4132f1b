#include "utils/ReplaceAll.h"

namespace quillmark {

void replaceAll(std::string &text, std::string_view what, std::string_view by) {
    size_t at = text.find(what);
    if (at == std::string::npos) {
        return;
    }
    std::string result;
    size_t copied = 0;
    for (; at != std::string::npos; at = text.find(what, copied)) {
        result.append(text, copied, at - copied).append(by);
        copied = at + what.size();
    }
    text = result.append(std::string_view(text).substr(copied));
}

} // namespace quillmark
