#include "platform/files/HomeFolder.h"

#include "platform/files/Path.h"
#include "platform/process/EnvironmentVariable.h"

#include <pwd.h>
#include <unistd.h>

namespace quillmark {

std::string homeFolder() {
    std::string folder = environmentVariable("HOME");
    if (!folder.starts_with('/')) {
        const struct passwd *account = ::getpwuid(::getuid()); // NOLINT(concurrency-mt-unsafe): the answer is copied
        folder = account != nullptr ? account->pw_dir : "/";
    }
    return withoutEndingSlashes(folder);
}

std::string folderOfDesktop(const char *variable, const char *usual) {
    const std::string folder = environmentVariable(variable);
    return folder.starts_with('/') ? folder : homeFolder() + '/' + usual;
}

std::string expandingTilde(std::string_view path) {
    return path == "~" || path.starts_with("~/") ? appendingPathComponent(homeFolder(), path.substr(1))
                                                 : std::string(path);
}

} // namespace quillmark
