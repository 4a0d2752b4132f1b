#pragma once

#include <string>

namespace updateqm {

/// Gives the core application in a launcher's resources its mode back.
void repairCoreApplication(const std::string &path);

/// Lets nobody but the caller into his folder of key pairs. It acts with the caller's rights alone.
void repairKeyPairs(const std::string &path);

} // namespace updateqm
