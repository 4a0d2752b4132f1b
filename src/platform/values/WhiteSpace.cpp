#include "platform/values/WhiteSpace.h"

#include <algorithm>
#include <array>

namespace quillmark {

namespace {

using namespace std::string_view_literals;

/// In UTF-8: the characters with Unicode's property White_Space.
constexpr std::array kWhiteSpace{" "sv,      "\t"sv,     "\n"sv,     "\v"sv,     "\f"sv,     "\r"sv,     "\u0085"sv,
                                 "\u00A0"sv, "\u1680"sv, "\u2000"sv, "\u2001"sv, "\u2002"sv, "\u2003"sv, "\u2004"sv,
                                 "\u2005"sv, "\u2006"sv, "\u2007"sv, "\u2008"sv, "\u2009"sv, "\u200A"sv, "\u2028"sv,
                                 "\u2029"sv, "\u202F"sv, "\u205F"sv, "\u3000"sv};

/// How many bytes of white space the text begins with, at one character's; 0 for none.
size_t spaceAtBegin(std::string_view text) {
    const auto *const space = std::find_if(kWhiteSpace.begin(), kWhiteSpace.end(),
                                           [text](std::string_view candidate) { return text.starts_with(candidate); });
    return space != kWhiteSpace.end() ? space->size() : 0;
}

size_t spaceAtEnd(std::string_view text) {
    const auto *const space = std::find_if(kWhiteSpace.begin(), kWhiteSpace.end(),
                                           [text](std::string_view candidate) { return text.ends_with(candidate); });
    return space != kWhiteSpace.end() ? space->size() : 0;
}

} // namespace

std::string_view trimmed(std::string_view text) {
    while (const size_t space = spaceAtBegin(text)) {
        text.remove_prefix(space);
    }
    while (const size_t space = spaceAtEnd(text)) {
        text.remove_suffix(space);
    }
    return text;
}

std::string simplified(std::string_view text) {
    std::string result;
    for (std::string_view rest = trimmed(text); !rest.empty();) {
        if (const size_t space = spaceAtBegin(rest)) {
            result += result.ends_with(' ') ? "" : " ";
            rest.remove_prefix(space);
        } else {
            result += rest.front();
            rest.remove_prefix(1);
        }
    }
    return result;
}

} // namespace quillmark
