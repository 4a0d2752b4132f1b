#pragma once

#include <cstdint>
#include <string>

namespace quillmark {

class Bundle;

/// The program's build number.
inline constexpr double Quillmark_ClientVersionNumber = 1303.0;
/// For tools that look for such strings in a program file; nothing reads it.
extern const char Quillmark_ClientVersionString[];

/// The bundle's short version, "1.14.4", or with its build, "1.14.4 (1303)". What the bundle does not tell is 1.14.4
/// and the default build.
std::string versionOfBundleAsString(const Bundle &bundle, std::int32_t defaultBuild, bool withBuild);

/// The same for the running application, as it was at the first call.
std::string versionOfThisAppAsString(bool withBuild);

} // namespace quillmark
