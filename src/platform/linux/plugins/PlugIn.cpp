#include "platform/linux/plugins/PlugIn.h"

#include "platform/Bundle.h"
#include "platform/process/EnvironmentVariable.h"

#include <dlfcn.h>
#include <unistd.h>

namespace quillmark {

void *plugInSymbol(const Bundle &bundle, const char *fileName, const char *symbol, std::string &obstacle) {
    const std::string path = bundle.path() + "/Contents/PlugIns/" + fileName;
    void *const plugIn = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    void *const address = plugIn != nullptr ? ::dlsym(plugIn, symbol) : nullptr;
    if (address == nullptr) {
        const char *const text = ::dlerror(); // NOLINT(concurrency-mt-unsafe): the C library keeps one for each thread
        obstacle = text != nullptr ? text : "the loader gives no reason";
    }
    return address;
}

std::optional<std::string> sessionBusAddress() {
    if (const std::string address = environmentVariable("DBUS_SESSION_BUS_ADDRESS"); !address.empty()) {
        return address;
    }
    const std::string folder = environmentVariable("XDG_RUNTIME_DIR");
    const std::string socket = folder + "/bus";
    const bool isThere = !folder.empty() && ::access(socket.c_str(), F_OK) == 0;
    return isThere ? std::optional("unix:path=" + socket) : std::nullopt;
}

} // namespace quillmark
