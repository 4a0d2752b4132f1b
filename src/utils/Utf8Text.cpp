#include "utils/Utf8Text.h"

#include <algorithm>
#include <utf8.h>
#include <utility>

namespace quillmark {

std::string_view::const_iterator behindAscii(std::string_view bytes) {
    return std::find_if(bytes.begin(), bytes.end(), [](char byte) { return static_cast<signed char>(byte) < 0; });
}

std::optional<std::string> utf8Text(std::string bytes) {
    const std::string_view view = bytes;
    return utf8::is_valid(behindAscii(view), view.end()) ? std::optional(std::move(bytes)) : std::nullopt;
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
