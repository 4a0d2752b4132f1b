#pragma once

#include <string>

namespace updateqm {

/// The version (CFBundleVersion) of a bundle in a folder; empty when there is none. Only for folders that nobody else
/// can write to.
std::string bundleVersion(int folder, const std::string &name);

} // namespace updateqm
