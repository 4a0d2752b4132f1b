#include "HeapLimit.h"
#include "platform/linux/LinuxImages.h"

#include <QtEndian>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace quillmark;

namespace {

/// A bitmap says how large it is and need not hold that much: nearly every changed one is huge and black, and takes a
/// tenth of a second.
bool isLargeBitmap(const QByteArray &bytes) {
    constexpr int kSizeAt = 18;
    constexpr qint64 kManyPixels = 1 << 16;
    if (!bytes.startsWith("BM") || bytes.size() < kSizeAt + 8) {
        return false;
    }
    const qint64 width = qFromLittleEndian<qint32>(bytes.constData() + kSizeAt);
    const qint64 height = qFromLittleEndian<qint32>(bytes.constData() + kSizeAt + 4);
    return std::abs(width * height) > kManyPixels;
}

} // namespace

/// The largest picture, 4096 pixels in both directions at 16 bits a channel, is there twice while it is decoded.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    if (isLargeBitmap(bytes)) {
        return 0;
    }
    const fuzz::HeapLimit limit(2 * 128 + 16);
    const auto image = decodeImage(bytes, QStringLiteral("picture"));
    if (image && (image->width < 1 || image->height < 1 ||
                  image->rgba.size() != static_cast<qsizetype>(image->width) * image->height * 4)) {
        std::abort();
    }
    return 0;
}
