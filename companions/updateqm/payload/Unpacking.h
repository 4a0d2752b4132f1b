#pragma once

#include "process/Confined.h"

#include <string>

namespace updateqm {

class Staging;
class VerifiedPayload;

/// How the bundle's contents are packed.
enum class Packing {
    Archive, ///< ZIP; programs are what lies in a folder "MacOS"
    Package, ///< a flat installer package: an archive (xar) of a description, "PackageInfo", and of the files,
             ///< "Payload", which is an archive itself (cpio, compressed); programs are known by their mode
};

/// Unpacks the one bundle of a payload. A confined process reads it; this one writes what may be written: folders,
/// files and links that stay inside the bundle, in bounded numbers and sizes, with the modes of an installation,
/// whatever the payload says of owners and special bits.
class Unpacking {
public:
    Unpacking(const VerifiedPayload &payload, Packing packing);

    /// Where the bundle belongs by the description of a package; of an archive, its name alone.
    const std::string &place() const { return m_place; }

    /// Writes all of it into the staging folder. Raises a Failure when a part of it could not be written.
    void writeTo(Staging &staging);

private:
    std::string m_source;
    Confined m_reader;
    std::string m_place;
};

} // namespace updateqm
