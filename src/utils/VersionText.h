#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillmark {

/// A version of the four-number form, as launchers and helper tools have it.
struct MicrosoftStyleVersion {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t build = 0;
    std::uint32_t revision = 0;

    bool operator==(const MicrosoftStyleVersion &) const = default;
};

/// A version of the three-number form, as frameworks and bundles have it.
struct ComponentVersion {
    std::int32_t major = 0;
    std::int32_t minor = 0;
    std::int32_t bugfix = 0;

    auto
    operator<=>(const ComponentVersion &) const = default; // NOLINT(modernize-use-nullptr): takes the 0 inside for one
};

/// The four numbers in a text such as "1.14.4 (1303)" or "version 5". Only the first line counts; every "version ",
/// "a", "b", "(" and ")" is dropped, so that 2.0b3 reads as 2.03. One number is the major one; any other count than one
/// or four is logged as an error and gives zeros.
MicrosoftStyleVersion microsoftStyleVersionFromString(std::string_view text);

/// The build in a text of a version, one blank and the build in parentheses. Any other number of blanks ends the
/// process through an assertion.
std::int32_t buildNumberFromVersionStr(std::string_view text);

/// The three numbers between two dots; nothing when there are more or fewer pieces.
std::optional<ComponentVersion> parseVersionString(std::string_view text);

} // namespace quillmark
