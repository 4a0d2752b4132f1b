#pragma once

#include <string>

namespace updateqm {

/// Installs the bundle of a signed ZIP archive at its place, which must be one of the catalogue's.
void installArchive(const std::string &path, const std::string &signaturePath, const std::string &installPath);

/// Installs the repairs of one system version from their ZIP archive.
void installSystemFixes(const std::string &path, const std::string &signaturePath);

/// Installs the bundle of a flat package where the package says, which must be one of the catalogue's places. The
/// signature lies beside the package, with ".sig" behind its name.
void installPackage(const std::string &path);

/// Replaces the whole client by that of a flat package.
void installClient(const std::string &path, const std::string &signaturePath, const std::string &installPath);

} // namespace updateqm
