#include "HeapLimit.h"
#include "platform/linux/LinuxImages.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace quillmark;

/// The largest picture, 4096 pixels in both directions at 16 bits a channel, is there twice while it is decoded.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const fuzz::HeapLimit limit(2 * 128 + 16);
    const auto image = decodeImage(bytes, QStringLiteral("picture"));
    if (image && (image->width < 1 || image->height < 1 ||
                  image->rgba.size() != static_cast<qsizetype>(image->width) * image->height * 4)) {
        std::abort();
    }
    return 0;
}
