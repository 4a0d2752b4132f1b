#pragma once

#include "Administration.h"
#include "files/Folder.h"

#include <string>

namespace updateqm {

/// Begins to change what is the administrator's. Raises a Failure when a newer release of this tool is installed: it
/// can't be called by whoever has kept an older one.
Administration beginInstallation();

/// The tools' own folder, to which only the administrator can write from now on. It is made when it is missing.
Folder toolFolder();

/// Installs this very program, when its signature is right.
void installItself(const std::string &signaturePath);

/// Installs a tool whose mode the catalogue gives as this one.
void installTool(const std::string &path, const std::string &signaturePath, unsigned mode);

/// Gives an installed tool its owner and mode back, when it still is what the vendor signed.
void repairTool(const std::string &name, unsigned mode);

/// The same for all tools that are installed.
void repairAllTools();

} // namespace updateqm
