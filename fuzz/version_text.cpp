#include "platform/values/Utf8Text.h"
#include "utils/Log.h"
#include "utils/Utf16.h"
#include "utils/VersionText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

using namespace quillmark;

namespace {

// The rules once more, character by character and without any of the helpers.

std::u16string dropped(const std::u16string &text, const std::u16string &piece) {
    std::u16string result;
    for (size_t at = 0; at < text.size();) {
        if (text.substr(at, piece.size()) == piece) {
            at += piece.size();
        } else {
            result += text[at++];
        }
    }
    return result;
}

bool isBlank(char16_t character) {
    return (character >= u'\t' && character <= u'\r') || character == u' ' || character == 0x85 || character == 0xA0 ||
           character == 0x1680 || (character >= 0x2000 && character <= 0x200A) || character == 0x2028 ||
           character == 0x2029 || character == 0x202F || character == 0x205F || character == 0x3000;
}

double number(const std::u16string &text, double least, double most) {
    size_t at = 0;
    while (at < text.size() && isBlank(text[at])) {
        ++at;
    }
    const bool isNegative = at < text.size() && text[at] == u'-';
    if (at < text.size() && (text[at] == u'-' || text[at] == u'+')) {
        ++at;
    }
    double value = 0;
    for (; at < text.size() && text[at] >= u'0' && text[at] <= u'9'; ++at) {
        value = value * 10 + (text[at] - u'0');
    }
    return std::clamp(isNegative ? -value : value, least, most);
}

MicrosoftStyleVersion slowVersion(const std::u16string &text) {
    std::u16string line;
    for (const char16_t character : text) {
        if (character == u'\n') {
            break;
        }
        line += character;
    }
    line = dropped(line, u"version ");
    for (const char16_t *letter : {u"a", u"b", u"(", u")"}) {
        line = dropped(line, letter);
    }
    std::vector<std::u16string> pieces(1);
    for (const char16_t character : line) {
        if (character == u'.' || character == u' ') {
            pieces.emplace_back();
        } else {
            pieces.back() += character;
        }
    }
    constexpr double kMost = 4294967295.0;
    const auto at = [&pieces](size_t index) { return static_cast<std::uint32_t>(number(pieces[index], 0, kMost)); };
    if (pieces.size() == 1) {
        return {at(0), 0, 0, 0};
    }
    return pieces.size() == 4 ? MicrosoftStyleVersion{at(0), at(1), at(2), at(3)} : MicrosoftStyleVersion{};
}

std::optional<ComponentVersion> slowComponent(const std::u16string &text) {
    std::vector<std::u16string> pieces(1);
    for (const char16_t character : text) {
        if (character == u'.') {
            pieces.emplace_back();
        } else {
            pieces.back() += character;
        }
    }
    if (pieces.size() != 3) {
        return std::nullopt;
    }
    const auto at = [&pieces](size_t index) {
        return static_cast<std::int32_t>(number(pieces[index], -2147483648.0, 2147483647.0));
    };
    return ComponentVersion{at(0), at(1), at(2)};
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int * /*count*/, char *** /*arguments*/) {
    _setStandardStreams(nullptr, nullptr); // most inputs are errors
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string text = validText({reinterpret_cast<const char *>(data), size}); // NOLINT
    const std::u16string characters = utf16(text);
    if (microsoftStyleVersionFromString(text) != slowVersion(characters) ||
        parseVersionString(text) != slowComponent(characters)) {
        std::abort();
    }
    return 0;
}
