#include "utils/Utf16.h"

#include "platform/values/Utf8Text.h"

#include <iterator>
#include <utf8.h>

namespace quillmark {

std::u16string utf16(std::string_view text) {
    const size_t length = asciiLength(text);
    const std::string_view rest = text.substr(length);
    if (!utf8::is_valid(rest.begin(), rest.end())) {
        return utf16(validText(text));
    }
    std::u16string characters(text.begin(), text.begin() + length);
    utf8::unchecked::utf8to16(rest.begin(), rest.end(), std::back_inserter(characters));
    return characters;
}

} // namespace quillmark
