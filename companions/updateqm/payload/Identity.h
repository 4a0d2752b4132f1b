#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace updateqm {

/// What a tool says of itself, in a section of its own in its file.
struct Identity {
    std::string name;
    std::string version; ///< four numbers between dots
};

/// \returns nothing for what is not a program of this system, or has no such section.
std::optional<Identity> identityIn(std::string_view program);

/// Whether the version is lower; numbers between dots count one after the other, and what is not a number counts as 0.
bool isOlder(std::string_view version, std::string_view than);

} // namespace updateqm
