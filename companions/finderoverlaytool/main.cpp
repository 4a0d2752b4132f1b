/// Stand-in for the overlay tool, which brings the product's badges into the file manager. File managers here take no
/// such plug-in, so it only makes sure that the plug-in could be trusted: a bundle that nobody but the administrator
/// can have changed.

#include "ToolIdentity.h"

#include <cstdio>
#include <string_view>
#include <sys/stat.h>

QUILLMARK_TOOL_IDENTITY("finderoverlaytool", QUILLMARK_TOOL_VERSION)

namespace {

constexpr const char *kPlugIn = "/Library/Application Support/Quillmark/QuillmarkOverlay.bundle";

/// Exit statuses.
constexpr int kWrongCommandLine = 64;
constexpr int kNoPlugIn = 66;
constexpr int kUntrustedPlugIn = 77;

int tell(const char *what, const char *why, int status) {
    std::fprintf(stderr, "finderoverlaytool: %s: %s\n", what, why);
    return status;
}

int insertFinderOverlay() {
    struct stat status {};
    if (::lstat(kPlugIn, &status) != 0 || !S_ISDIR(status.st_mode)) {
        return tell(kPlugIn, "is not installed", kNoPlugIn);
    }
    if (status.st_uid != 0 || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return tell(kPlugIn, "can be changed by others than the administrator", kUntrustedPlugIn);
    }
    return 0;
}

} // namespace

int main(int count, char **arguments) {
    if (count <= 1) {
        std::puts("Quillmark Finder Overlay Tool Limited " QUILLMARK_TOOL_VERSION);
        return 0;
    }
    if (count == 2 && std::string_view(arguments[1]) == "insertfinderoverlay") {
        return insertFinderOverlay();
    }
    return tell(arguments[1], "there is no such command", kWrongCommandLine);
}
