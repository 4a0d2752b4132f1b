#include "platform/linux/ExecutablePath.h"

#include <filesystem>
#include <string_view>
#include <sys/auxv.h>

namespace quillmark {

std::optional<std::string> executablePath() {
    constexpr std::string_view kDeleted = " (deleted)"; // an update took the file's place
    std::error_code error;
    std::string path = std::filesystem::read_symlink("/proc/self/exe", error);
    if (path.empty()) {
        const auto *startedBy =
            reinterpret_cast<const char *>(::getauxval(AT_EXECFN)); // NOLINT: how the kernel tells it
        path = std::filesystem::canonical(startedBy != nullptr ? startedBy : "", error);
        return path.empty() ? std::nullopt : std::optional(path);
    }
    if (path.ends_with(kDeleted)) {
        path.resize(path.size() - kDeleted.size());
    }
    return path;
}

} // namespace quillmark
