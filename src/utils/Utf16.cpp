#include "utils/Utf16.h"

#include "utils/Utf8Text.h"

#include <algorithm>
#include <iterator>
#include <utf8.h>

namespace quillmark {

std::u16string utf16(std::string_view text) {
    const auto *const behindAscii =
        std::find_if(text.begin(), text.end(), [](char byte) { return static_cast<signed char>(byte) < 0; });
    if (utf8::find_invalid(behindAscii, text.end()) != text.end()) {
        return utf16(validText(text));
    }
    std::u16string characters(text.begin(), behindAscii); // nearly all texts end here
    utf8::unchecked::utf8to16(behindAscii, text.end(), std::back_inserter(characters));
    return characters;
}

} // namespace quillmark
