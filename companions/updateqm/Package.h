#pragma once

#include <string>

namespace updateqm {

class Staging;
class VerifiedPayload;

// Flat installer packages: an archive (xar) of a description, "PackageInfo", and of the files, "Payload", which is an
// archive itself (cpio, compressed).

/// Where the one bundle of a package belongs, by the package's own description.
std::string installPathOf(const VerifiedPayload &package);

/// Unpacks the bundle of that name into the staging folder.
void unpackPackage(const Staging &staging, const VerifiedPayload &package, const std::string &bundleName);

} // namespace updateqm
