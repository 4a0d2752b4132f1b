#include "platform/values/Base64.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(Base64Codec, PadsTheLastGroupOfFour) {
    EXPECT_EQ(base64(""), "");
    EXPECT_EQ(base64("f"), "Zg==");
    EXPECT_EQ(base64("fo"), "Zm8=");
    EXPECT_EQ(base64("foo"), "Zm9v");
    EXPECT_EQ(base64("foob"), "Zm9vYg==");
}

TEST(Base64Codec, TakesBytesOfAnyValue) {
    EXPECT_EQ(base64(std::string_view("\0\0\0", 3)), "AAAA");
    EXPECT_EQ(base64("\xff\xff\xfe"), "///+");
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
        EXPECT_EQ(bytesOfBase64(base64(bytes)), bytes);
    }
}

TEST(Base64Codec, ReadsTextsWithAndWithoutPadding) {
    EXPECT_EQ(bytesOfBase64(""), "");
    EXPECT_EQ(bytesOfBase64("Zg=="), "f");
    EXPECT_EQ(bytesOfBase64("Zg"), "f");
    EXPECT_EQ(bytesOfBase64("Zm8="), "fo");
    EXPECT_EQ(bytesOfBase64("Zm8"), "fo");
    EXPECT_EQ(bytesOfBase64("Zm9vYg"), "foob");
}

TEST(Base64Codec, PassesOverBitsThatMakeNoWholeByte) {
    EXPECT_EQ(bytesOfBase64("Zh=="), "f");
    EXPECT_EQ(bytesOfBase64("Zm9vY"), "foo");
    EXPECT_EQ(bytesOfBase64("Z"), "");
}

TEST(Base64Codec, ReadsNothingWithAWrongCharacter) {
    for (const char *const text : {"Zm9v\n", " Zm9v", "Zm-_", "Zm9\xfc", "€uro"}) {
        EXPECT_EQ(bytesOfBase64(text), std::nullopt) << text;
    }
    EXPECT_EQ(bytesOfBase64(std::string_view("Zm9\0", 4)), std::nullopt);
}

TEST(Base64Codec, ReadsNothingWithPaddingAnywhereElse) {
    for (const char *const text : {"=", "====", "Zg=", "Z===", "Zm9v=", "Zm9v====", "Zg==Zg==", "=Zm8", "Z=g="}) {
        EXPECT_EQ(bytesOfBase64(text), std::nullopt) << text;
    }
}

} // namespace
} // namespace quillmark
