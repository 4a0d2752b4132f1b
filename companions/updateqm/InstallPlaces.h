#pragma once

#include <span>
#include <string_view>

namespace updateqm {

// What may be installed, and where. Nothing else is, whoever signed it.

/// Whoever has locked it is the only run that changes anything; nobody but the administrator can.
inline constexpr std::string_view kLockFile = "/run/quillmark-updateqm.lock";

/// The tools' own folder.
inline constexpr std::string_view kToolFolder = "/Library/Application Support/Quillmark";

struct Tool {
    std::string_view name;
    unsigned mode;
};

inline constexpr Tool kTools[] = {
    {"updateqm", 04755},
    {"finderoverlaytool", 0755},
};

/// Bundles that packages install.
inline constexpr std::string_view kPackagedBundles[] = {
    "/Library/Filesystems/QuillmarkFS.fs",
    "/Library/Frameworks/QuillmarkRuntime.framework",
};

/// Bundles that come as ZIP archives.
inline constexpr std::string_view kArchivedBundles[] = {
    "/Library/Contextual Menu Items/QuillmarkCM.plugin",
    "/Library/Application Support/Quillmark/QuillmarkOverlay.bundle",
};

/// The repairs of one system version, unpacked from a ZIP archive.
inline constexpr std::string_view kSystemFixes = "/Library/Application Support/Quillmark/Fixes10_5";

/// The whole client, which a full update replaces, and the core application inside it.
inline constexpr std::string_view kClientBundle = "Quillmark.app";
inline constexpr std::string_view kApplications = "/Applications";
inline constexpr std::string_view kCoreBundle = "QuillmarkCore.app";

} // namespace updateqm
