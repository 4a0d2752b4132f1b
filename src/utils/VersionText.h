#pragma once

#include <QString>
#include <compare>
#include <optional>

namespace quillmark {

/// A version of the four-number form, as launchers and helper tools have it.
struct MicrosoftStyleVersion {
    quint32 major = 0;
    quint32 minor = 0;
    quint32 build = 0;
    quint32 revision = 0;

    bool operator==(const MicrosoftStyleVersion &) const = default;
};

/// A version of the three-number form, as frameworks and bundles have it.
struct ComponentVersion {
    qint32 major = 0;
    qint32 minor = 0;
    qint32 bugfix = 0;

    auto
    operator<=>(const ComponentVersion &) const = default; // NOLINT(modernize-use-nullptr): takes the 0 inside for one
};

/// The four numbers in a text such as "1.14.4 (1303)" or "version 5". Only the first line counts; every "version ",
/// "a", "b", "(" and ")" is dropped, so that 2.0b3 reads as 2.03. One number is the major one; any other count than one
/// or four is logged as an error and gives zeros.
MicrosoftStyleVersion microsoftStyleVersionFromString(const QString &text);

/// The build in a text of a version, one blank and the build in parentheses. Any other number of blanks ends the
/// process through an assertion.
qint32 buildNumberFromVersionStr(const QString &text);

/// The three numbers between two dots; nothing when there are more or fewer pieces.
std::optional<ComponentVersion> parseVersionString(const QString &text);

} // namespace quillmark
