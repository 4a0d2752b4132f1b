#include "platform/HomeFolder.h"

#include "platform/Path.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace quillmark {

std::string homeFolder() {
    const char *home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe): nobody sets it
    if (home == nullptr || *home != '/') {
        const struct passwd *account = ::getpwuid(::getuid()); // NOLINT(concurrency-mt-unsafe): the answer is copied
        home = account != nullptr ? account->pw_dir : "/";
    }
    std::string folder = home;
    while (folder.size() > 1 && folder.ends_with('/')) {
        folder.pop_back();
    }
    return folder;
}

std::string expandingTilde(std::string_view path) {
    return path == "~" || path.starts_with("~/") ? appendingPathComponent(homeFolder(), path.substr(1))
                                                 : std::string(path);
}

} // namespace quillmark
