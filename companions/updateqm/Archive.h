#pragma once

#include <string>

namespace updateqm {

class Staging;
class VerifiedPayload;

/// Unpacks a ZIP archive that holds one bundle of the given name, and makes sure that all of it is there: unpacking
/// alone does not tell of entries that failed.
void unpackArchive(const Staging &staging, const VerifiedPayload &payload, const std::string &bundleName);

} // namespace updateqm
