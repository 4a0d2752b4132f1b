/// Starts an application bundle as the desktop does: open PATH. One that runs already is not started again. The
/// launcher's shells find this program first in their search path, where a Mac has one of its own.

#include "platform/Platform.h"
#include "platform/Workspace.h"
#include "platform/files/Path.h"
#include "platform/process/EnvironmentVariable.h"
#include "platform/values/Pieces.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

int failed(const char *path, const char *why) {
    std::fprintf(stderr, "open: \"%s\" %s\n", path, why);
    return EXIT_FAILURE;
}

/// Without links; an empty text for what is not there.
std::string plainPath(std::string_view path) {
    std::error_code error;
    return std::filesystem::canonical(path, error).string();
}

/// The folder of this program leads the search path of the shell that has started it. What it starts is to find the
/// system's programs.
void leaveSearchPath() {
    const std::string own = quillmark::deletingLastPathComponent(plainPath("/proc/self/exe"));
    const std::string folders = quillmark::environmentVariable("PATH");
    std::string others;
    for (const std::string_view folder : quillmark::pieces(folders, ':')) {
        if (plainPath(folder) != own) {
            others.append(others.empty() ? "" : ":").append(folder);
        }
    }
    ::setenv("PATH", others.c_str(), 1); // NOLINT(concurrency-mt-unsafe): no other thread runs
}

} // namespace

int main(int count, char **arguments) {
    if (count != 2) {
        std::fputs("open: it takes the path of one application bundle\n", stderr);
        return EXIT_FAILURE;
    }
    // Without links, as the system tells what runs.
    const std::string bundle = plainPath(arguments[1]);
    std::error_code error;
    if (!bundle.ends_with(".app") || !std::filesystem::is_directory(bundle, error)) {
        return failed(arguments[1], "is not an application bundle");
    }
    leaveSearchPath();
    return quillmark::platform().workspace.launchApplication(bundle) ? EXIT_SUCCESS
                                                                     : failed(arguments[1], "can't be started");
}
