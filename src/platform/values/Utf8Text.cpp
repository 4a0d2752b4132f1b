#include "platform/values/Utf8Text.h"

#include <algorithm>
#include <utf8.h>
#include <utility>

namespace quillmark {

size_t asciiLength(std::string_view bytes) {
    const auto isAscii = [](char byte) { return static_cast<signed char>(byte) >= 0; };
    return static_cast<size_t>(std::find_if_not(bytes.begin(), bytes.end(), isAscii) - bytes.begin());
}

bool isUtf8(std::string_view bytes) {
    const std::string_view rest = bytes.substr(asciiLength(bytes));
    return utf8::is_valid(rest.begin(), rest.end());
}

std::optional<std::string> utf8Text(std::string bytes) {
    return isUtf8(bytes) ? std::optional(std::move(bytes)) : std::nullopt;
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
