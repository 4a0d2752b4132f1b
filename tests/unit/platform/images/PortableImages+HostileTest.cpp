#include "platform/images/PortableImages.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

using namespace std::string_literals;

/// Packs a run of zeros in the tersest form that the packing method has.
class PackedZeros {
public:
    explicit PackedZeros(int count) {
        bits(1, 1);    // the last block
        bits(1, 2);    // with the fixed code
        code(0x30, 8); // a zero
        for (int packed = 1; packed < count; packed += 258) {
            code(0xC5, 8); // 258 more
            code(0, 5);    // of what stands one place back
        }
        code(0, 7); // the end
        bits(0, 7);
    }
    const std::string &bytes() const { return m_bytes; }

private:
    void bits(unsigned value, int count) {
        for (int i = 0; i < count; ++i) {
            m_byte |= ((value >> i) & 1U) << m_filled;
            if (++m_filled == 8) {
                m_bytes += static_cast<char>(m_byte);
                m_byte = 0;
                m_filled = 0;
            }
        }
    }
    /// Codes stand with their highest bit first.
    void code(unsigned value, int count) {
        while (count-- > 0) {
            bits((value >> count) & 1U, 1);
        }
    }

    std::string m_bytes = "\x78\x01";
    unsigned m_byte = 0;
    int m_filled = 0;
};

std::string chunk(const char *type, const std::string &contents) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(contents.size() >> shift);
    }
    return bytes + type + contents + std::string(4, '\0'); // the sums are not looked at
}

/// One transparent pixel, and `count` bytes in place of the few that it takes.
std::string onePixelOf(int count) {
    return "\x89PNG\r\n\x1a\n" + chunk("IHDR", "\0\0\0\1\0\0\0\1\x08\x06\0\0\0"s) +
           chunk("IDAT", PackedZeros(count).bytes()) + chunk("IEND", {});
}

TEST(ImageRegression, ASmallFileThatUnfoldsBeyondTheLargestPictureIsRefused) {
    const std::string bomb = onePixelOf(200 << 20);
    EXPECT_LT(bomb.size(), 2U << 20);
    EXPECT_FALSE(PortableImages().decode(bomb, {}).has_value());
}

TEST(ImageRegression, ALittleMoreDataThanThePictureTakesIsIgnored) {
    const auto image = PortableImages().decode(onePixelOf(1000), "pixel");
    ASSERT_TRUE(image.has_value());
    EXPECT_EQ(image->rgba, std::string(4, '\0'));
}

TEST(ImageRegression, ABitmapWithoutRowsIsNoPicture) {
    const std::string header = "BM\0\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\1\0\0\0\0\0\0\0\1\0\x18\0"s;
    EXPECT_FALSE(PortableImages().decode(header + std::string(100, '\0'), {}).has_value());
}

} // namespace
} // namespace quillmark
