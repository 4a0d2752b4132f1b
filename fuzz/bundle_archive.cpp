/// What the update tool's confined process reads: packages, archives and descriptions of bundles. The first byte says
/// which.

#include "HeapLimit.h"
#include "payload/Reading.h"
#include "process/Failure.h"
#include "process/Records.h"

#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0) {
        return 0;
    }
    static const int nobody = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    constexpr void (*kReaders[])(std::string_view, const updateqm::RecordWriter &) = {
        updateqm::readArchive, updateqm::readPackage, updateqm::readVersion};
    const quillmark::fuzz::HeapLimit limit(256);
    const std::string_view bytes(reinterpret_cast<const char *>(data) + 1, size - 1);
    try {
        kReaders[data[0] % std::size(kReaders)](bytes, updateqm::RecordWriter(nobody));
    } catch (const updateqm::Failure &) {
        return 0; // what is damaged is told
    }
    return 0;
}
