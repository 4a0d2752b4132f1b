#include "platform/images/PortableImages.h"

#include "platform/files/ReadFile.h"

#include <climits>
#include <cstdlib>
#include <memory>

namespace {

/// The most that the decoder may have in one block: the rows of the largest picture, at 16 bits a channel, each with a
/// byte for its filter. A few kilobytes of packed zeros could otherwise unfold into gigabytes.
constexpr size_t kLargestBlock = size_t{4096} * (4096 * 4 * 2 + 1);

void *resizedBlock(void *block, size_t size) {
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): the decoder asks for malloc's contract
    return size <= kLargestBlock ? std::realloc(block, size) : nullptr;
}

} // namespace

#define STBI_MALLOC(size) resizedBlock(nullptr, size)
#define STBI_REALLOC(block, size) resizedBlock(block, size)
#define STBI_FREE(block) std::free(block)
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_BMP
#define STBI_ONLY_PNG
#define STBI_NO_STDIO
#define STBI_NO_FAILURE_STRINGS
#define STBI_MAX_DIMENSIONS 4096
#define STBI_ASSERT(condition) ((void)0)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#include <stb_image.h>
#pragma GCC diagnostic pop

namespace quillmark {

std::optional<Image> PortableImages::decode(const std::string &bytes, const std::string &name) const {
    constexpr int kChannels = 4;
    if (bytes.empty() || bytes.size() > INT_MAX) {
        return std::nullopt;
    }
    int width = 0;
    int height = 0;
    const std::unique_ptr<stbi_uc, void (*)(void *)> pixels(
        stbi_load_from_memory(reinterpret_cast<const stbi_uc *>(bytes.data()), // NOLINT: bytes
                              static_cast<int>(bytes.size()), &width, &height, nullptr, kChannels),
        stbi_image_free);
    if (pixels == nullptr || width < 1 || height < 1) { // a bitmap without rows is decoded, too
        return std::nullopt;
    }
    const auto *const begin = reinterpret_cast<const char *>(pixels.get()); // NOLINT: bytes
    const size_t size = static_cast<size_t>(width) * static_cast<size_t>(height) * kChannels;
    return Image{name, width, height, {begin, size}};
}

std::optional<Image> PortableImages::load(const std::string &path) const {
    constexpr std::int64_t kMaximumFileSize = 64LL << 20; // what 4096 by 4096 pixels take
    auto contents = readRegularFile(path, kMaximumFileSize);
    const auto *bytes = std::get_if<std::string>(&contents);
    return bytes != nullptr ? decode(*bytes, path) : std::nullopt;
}

} // namespace quillmark
