#include "utils/UUIDString.h"

#include <array>
#include <cstdint>
#include <fmt/format.h>
#include <random>

namespace quillmark {

std::string UUIDString() {
    std::random_device random; // the system's own
    std::array<std::uint32_t, 4> words{};
    for (std::uint32_t &word : words) {
        word = random();
    }
    // Version 4, variant 1 (RFC 4122, section 4.4).
    return fmt::format("{:08X}-{:04X}-4{:03X}-{:04X}-{:04X}{:08X}", words[0], words[1] >> 16U, words[1] & 0xFFFU,
                       0x8000U | (words[2] >> 16U & 0x3FFFU), words[2] & 0xFFFFU, words[3]);
}

} // namespace quillmark
