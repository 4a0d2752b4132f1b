#include "HeapLimit.h"
#include "platform/images/PortableImages.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

using namespace quillmark;

namespace {

/// A bitmap says how large it is and need not hold that much: nearly every changed one is huge and black, and takes a
/// tenth of a second.
bool isLargeBitmap(const std::string &bytes) {
    constexpr size_t kSizeAt = 18;
    constexpr std::int64_t kManyPixels = 1 << 16;
    std::array<std::int32_t, 2> size{}; // as this processor has its numbers
    if (!bytes.starts_with("BM") || bytes.size() < kSizeAt + sizeof size) {
        return false;
    }
    std::memcpy(size.data(), bytes.data() + kSizeAt, sizeof size);
    return std::abs(std::int64_t{size[0]} * size[1]) > kManyPixels;
}

} // namespace

/// The largest picture, 4096 pixels in both directions at 16 bits a channel, is there twice while it is decoded.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    if (isLargeBitmap(bytes)) {
        return 0;
    }
    const fuzz::HeapLimit limit(2 * 128 + 16);
    const auto image = PortableImages().decode(bytes, "picture");
    if (image && (image->width < 1 || image->height < 1 ||
                  image->rgba.size() != static_cast<size_t>(image->width) * static_cast<size_t>(image->height) * 4)) {
        std::abort();
    }
    return 0;
}
