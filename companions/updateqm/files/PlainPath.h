#pragma once

#include <string>
#include <string_view>

namespace updateqm {

/// The two parts of an absolute path. Raises a Failure for one that is not absolute, ends in a slash, or has a
/// component that is empty, "." or "..".
struct PlainPath {
    std::string folder; ///< "/" for what lies at the top
    std::string name;

    static PlainPath of(std::string_view path);
};

} // namespace updateqm
