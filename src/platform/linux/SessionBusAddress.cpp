#include "platform/linux/SessionBusAddress.h"

#include <cstdlib>
#include <unistd.h>

namespace quillmark {

std::optional<std::string> sessionBusAddress() {
    const char *const address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); // NOLINT(concurrency-mt-unsafe)
    if (address != nullptr && *address != '\0') {
        return address;
    }
    const char *const folder = std::getenv("XDG_RUNTIME_DIR"); // NOLINT(concurrency-mt-unsafe)
    if (folder == nullptr || *folder == '\0') {
        return std::nullopt;
    }
    const std::string socket = std::string(folder) + "/bus";
    return ::access(socket.c_str(), F_OK) == 0 ? std::optional("unix:path=" + socket) : std::nullopt;
}

} // namespace quillmark
