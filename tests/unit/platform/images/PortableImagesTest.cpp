#include "platform/images/PortableImages.h"
#include "support/Lines.h"
#include "support/TemporaryHome.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

using test::repeated;

/// The number's four bytes, the lowest first.
std::string little(size_t number) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>(number >> shift);
    }
    return bytes;
}

/// A 24-bit bitmap, every pixel red.
std::string bitmap(size_t width, size_t height) {
    const std::string row = repeated({"\x00\x00\xFF", 3}, width);
    const std::string pixels = repeated(row + std::string((4 - row.size() % 4) % 4, '\0'), height);
    constexpr size_t kPlanesAndBits = 1 | 24 << 16; // two fields of 16 bits
    return "BM" + little(54 + pixels.size()) + little(0) + little(54) + little(40) + little(width) + little(height) +
           little(kPlanesAndBits) + little(0) + little(pixels.size()) + std::string(16, '\0') + pixels;
}

TEST(Images, ABitmapIsDecodedToRedGreenBlueAlpha) {
    const test::TemporaryHome home;
    const std::string file = home.write("logo.bmp", bitmap(3, 2));
    const auto image = PortableImages().load(file);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->name, file);
    EXPECT_EQ(image->width, 3);
    EXPECT_EQ(image->height, 2);
    EXPECT_EQ(image->rgba, repeated({"\xFF\x00\x00\xFF", 4}, 6));
}

TEST(Images, EveryTruncationGivesNoImageOrAWholeOne) {
    const std::string whole = bitmap(5, 5);
    for (size_t length = 0; length < whole.size(); ++length) {
        const auto image = PortableImages().decode(whole.substr(0, length), "x");
        EXPECT_TRUE(!image || image->rgba.size() == 5U * 5 * 4) << length;
    }
}

TEST(Images, WhatIsNoPictureGivesNone) {
    const test::TemporaryHome home;
    EXPECT_FALSE(PortableImages().load(home.path("missing")));
    EXPECT_FALSE(PortableImages().load(""));
    EXPECT_FALSE(PortableImages().load(home.path()));
    EXPECT_FALSE(PortableImages().load(home.write("empty", "")));
    EXPECT_FALSE(PortableImages().load(home.write("text", "BM but not really")));
}

TEST(Images, PicturesBeyond4096PixelsAreRefused) {
    std::string huge = bitmap(1, 1);
    huge.replace(18, 4, little(4097));
    EXPECT_FALSE(PortableImages().decode(huge, "x"));
    huge.replace(18, 8, repeated(little(0x7FFFFFFF), 2));
    EXPECT_FALSE(PortableImages().decode(huge, "x"));
}

} // namespace
} // namespace quillmark
