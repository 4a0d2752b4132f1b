#include "utils/Utf16.h"

#include "utils/Utf8Text.h"

#include <iterator>
#include <utf8.h>

namespace quillmark {

std::u16string utf16(std::string_view text) {
    if (!utf8::is_valid(text.begin(), text.end())) {
        return utf16(validText(text));
    }
    std::u16string characters;
    characters.reserve(text.size());
    utf8::unchecked::utf8to16(text.begin(), text.end(), std::back_inserter(characters));
    return characters;
}

} // namespace quillmark
