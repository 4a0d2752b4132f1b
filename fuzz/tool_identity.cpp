/// The section in which the update tool looks for a tool's name and version.

#include "payload/Identity.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string_view program(reinterpret_cast<const char *>(data), size);
    const auto identity = updateqm::identityIn(program);
    if (identity && program.find(identity->name + ' ' + identity->version) == std::string_view::npos) {
        std::abort();
    }
    if (updateqm::isOlder(program, program)) {
        std::abort();
    }
    return 0;
}
