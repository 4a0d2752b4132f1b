#include "utils/FoldedCase.h"

#include "platform/values/Utf8Text.h"

#include <clocale>
#include <cwctype>
#include <iterator>
#include <utf8.h>

namespace quillmark {

namespace {

/// The system's tables of all of Unicode's letters. It is never given back: other threads may ask until the very end.
locale_t allLetters() {
    static const locale_t locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

} // namespace

std::u32string foldedCase(std::string_view text) {
    const std::string valid = validText(text);
    std::u32string folded;
    utf8::unchecked::utf8to32(valid.begin(), valid.end(), std::back_inserter(folded));
    for (char32_t &character : folded) {
        if (character == U'\u0130' || character == U'\u0131') {
            continue; // which letter's other case the two Turkish ones are depends on the language
        }
        // By way of the capital: some small letters share one, as both forms of the Greek sigma do.
        const wint_t capital = ::towupper_l(static_cast<wint_t>(character), allLetters());
        character = static_cast<char32_t>(::towlower_l(capital, allLetters()));
    }
    return folded;
}

} // namespace quillmark
