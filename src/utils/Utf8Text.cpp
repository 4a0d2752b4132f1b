#include "utils/Utf8Text.h"

#include <utf8.h>

namespace quillmark {

std::optional<std::string> utf8Text(std::string_view bytes) {
    return utf8::is_valid(bytes.begin(), bytes.end()) ? std::optional(std::string(bytes)) : std::nullopt;
}

std::string validText(std::string_view bytes) {
    std::string text;
    for (const auto *at = bytes.begin();; ++at) {
        const auto *const fault = utf8::find_invalid(at, bytes.end());
        text.append(at, fault);
        if (fault == bytes.end()) {
            return text;
        }
        text += "\uFFFD";
        at = fault;
    }
}

} // namespace quillmark
