#include "utils/VersionText.h"

#include "platform/values/Pieces.h"
#include "utils/Assert.h"
#include "utils/IntegerValue.h"
#include "utils/Log.h"
#include "utils/OneLine.h"
#include "utils/ReplaceAll.h"

#include <algorithm>
#include <limits>

namespace quillmark {

namespace {

/// The number that a text begins with, or the nearest one of the type.
template <class Number>
Number numberIn(std::string_view text) {
    const std::int64_t least = std::numeric_limits<Number>::min();
    const std::int64_t most = std::numeric_limits<Number>::max();
    return static_cast<Number>(std::clamp(integerValue(text), least, most));
}

std::string_view withoutParentheses(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of("()"), text.size()));
    return text.substr(0, text.find_last_not_of("()") + 1);
}

} // namespace

MicrosoftStyleVersion microsoftStyleVersionFromString(std::string_view text) {
    std::string line(text.substr(0, text.find('\n')));
    replaceAll(line, "version ", "");
    std::erase_if(line,
                  [](char character) { return std::string_view("ab()").find(character) != std::string_view::npos; });
    std::replace(line.begin(), line.end(), ' ', '.');
    const auto parts = pieces(line, '.');
    if (parts.size() == 1) {
        return {numberIn<std::uint32_t>(parts[0]), 0, 0, 0};
    }
    if (parts.size() == 4) {
        return {numberIn<std::uint32_t>(parts[0]), numberIn<std::uint32_t>(parts[1]), numberIn<std::uint32_t>(parts[2]),
                numberIn<std::uint32_t>(parts[3])};
    }
    logError("Failed to extract version from string \"%@\"", onOneLine(text));
    return {};
}

std::int32_t buildNumberFromVersionStr(std::string_view text) {
    const auto vAndB = pieces(text, ' ');
    QUILLMARK_ASSERT(vAndB.size() == 2, "[vAndB count] == 2", "utils");
    return numberIn<std::int32_t>(withoutParentheses(vAndB[1]));
}

std::optional<ComponentVersion> parseVersionString(std::string_view text) {
    const auto parts = pieces(text, '.');
    if (parts.size() != 3) {
        return std::nullopt;
    }
    return ComponentVersion{numberIn<std::int32_t>(parts[0]), numberIn<std::int32_t>(parts[1]),
                            numberIn<std::int32_t>(parts[2])};
}

} // namespace quillmark
