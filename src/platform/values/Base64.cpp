#include "platform/values/Base64.h"

#include <array>
#include <cstdint>

namespace quillmark {

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned kBits = 6;

/// The place of each character in the alphabet, or one behind its end.
constexpr auto placesInAlphabet() {
    std::array<std::uint8_t, 256> places{};
    places.fill(kAlphabet.size());
    for (std::size_t place = 0; place < kAlphabet.size(); ++place) {
        places[static_cast<unsigned char>(kAlphabet[place])] = static_cast<std::uint8_t>(place);
    }
    return places;
}
constexpr auto kPlaces = placesInAlphabet();

} // namespace

std::string base64(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char byte : bytes) {
        bits = bits << 8U | static_cast<unsigned char>(byte);
        for (count += 8; count >= kBits; count -= kBits) {
            text += kAlphabet[bits >> (count - kBits) & 0x3FU];
        }
    }
    if (count > 0) {
        text += kAlphabet[bits << (kBits - count) & 0x3FU];
    }
    text.append((4 - text.size() % 4) % 4, '=');
    return text;
}

std::optional<std::string> bytesOfBase64(std::string_view text) {
    if (text.size() % 4 == 0 && text.ends_with('=')) {
        text.remove_suffix(text.ends_with("==") ? 2 : 1);
    }
    std::string bytes;
    bytes.reserve(text.size() * 3 / 4);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char character : text) {
        const std::uint32_t place = kPlaces[static_cast<unsigned char>(character)];
        if (place == kAlphabet.size()) {
            return std::nullopt;
        }
        bits = bits << kBits | place;
        count += kBits;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xFFU);
        }
    }
    return bytes;
}

} // namespace quillmark
