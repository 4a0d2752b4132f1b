#include "platform/values/Utf8Text.h"
#include "support/Lines.h"

#include <cstring>
#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(Utf8Text, IsWhatTheBytesAre) {
    const std::string_view texts[] = {"", "a", "aü€𝄞", "\uFEFFa", {"a\0b", 3}, "\uFFFF\U0010FFFF\uFFFD"};
    for (const std::string_view text : texts) {
        EXPECT_TRUE(isUtf8(text));
        EXPECT_EQ(utf8Text(std::string(text)), text);
        EXPECT_EQ(validText(text), text);
    }
}

/// What is no UTF-8: stray bytes, overlong forms, surrogates, characters beyond the last one, and such as are cut off.
constexpr const char *kFaults[] = {
    "\x80",         "\xff",         "\xc0\x80",         "\xc1\xbf",         "\xe0\x80\xaf",
    "\xed\xa0\x80", "\xed\xbf\xbf", "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xc3",
    "\xe2\x82",     "\xf0\x9d\x84"};

TEST(Utf8Text, IsAbsentWhereAByteIsNoPartOfUtf8) {
    for (const std::string fault : kFaults) {
        EXPECT_FALSE(isUtf8(fault));
        EXPECT_EQ(utf8Text(fault), std::nullopt);
        EXPECT_EQ(utf8Text("ü" + fault), std::nullopt);
        EXPECT_EQ(utf8Text(fault + "ü"), std::nullopt);
    }
}

TEST(Utf8Text, ThatIsValidHasOneMarkInPlaceOfEachSuchByte) {
    for (const std::string fault : kFaults) {
        const std::string marks = test::repeated("\uFFFD", fault.size());
        EXPECT_EQ(validText(fault), marks);
        EXPECT_EQ(validText("aü" + fault + "€𝄞" + fault), "aü" + marks + "€𝄞" + marks);
        EXPECT_EQ(validText(fault + '\n'), marks + '\n');
    }
}

} // namespace
} // namespace quillmark
