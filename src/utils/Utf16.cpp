#include "utils/Utf16.h"

#include "utils/Utf8Text.h"

#include <iterator>
#include <utf8.h>

namespace quillmark {

std::u16string utf16(std::string_view text) {
    const auto *const rest = behindAscii(text);
    if (!utf8::is_valid(rest, text.end())) {
        return utf16(validText(text));
    }
    std::u16string characters(text.begin(), rest);
    utf8::unchecked::utf8to16(rest, text.end(), std::back_inserter(characters));
    return characters;
}

} // namespace quillmark
