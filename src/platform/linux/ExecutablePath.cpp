#include "platform/linux/ExecutablePath.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <string_view>
#include <sys/auxv.h>
#include <unistd.h>

namespace quillmark {

std::optional<std::string> executablePath() {
    std::array<char, PATH_MAX> buffer{};
    const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0) {
        const auto *startedBy =
            reinterpret_cast<const char *>(::getauxval(AT_EXECFN)); // NOLINT: how the kernel tells it
        return startedBy != nullptr && ::realpath(startedBy, buffer.data()) != nullptr
                   ? std::optional<std::string>(buffer.data())
                   : std::nullopt;
    }
    constexpr std::string_view kDeleted = " (deleted)"; // an update took the file's place
    std::string path(buffer.data(), static_cast<size_t>(length));
    if (path.ends_with(kDeleted)) {
        path.resize(path.size() - kDeleted.size());
    }
    return path;
}

} // namespace quillmark
