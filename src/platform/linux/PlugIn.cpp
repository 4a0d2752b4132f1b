#include "platform/linux/PlugIn.h"

#include "platform/Bundle.h"

#include <dlfcn.h>

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

} // namespace quillmark
