#include "utils/Utf16.h"

#include <cstring>
#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(Utf16, HasOneCharacterUpToUFFFFAndTwoBeyond) {
    EXPECT_EQ(utf16(""), u"");
    EXPECT_EQ(utf16("aü€\uFFFF"), u"aü€\uFFFF");
    EXPECT_EQ(utf16("𝄞"), u"\xd834\xdd1e");
}

TEST(Utf16, KeepsNullCharactersAndMarks) {
    EXPECT_EQ(utf16(std::string_view("a\0b", 3)), std::u16string_view(u"a\0b", 3));
    EXPECT_EQ(utf16("\uFEFFa"), u"\uFEFFa");
}

TEST(Utf16, HasUFFFDInPlaceOfEachByteThatIsNoUtf8) {
    EXPECT_EQ(utf16("a\xff-"), u"a\uFFFD-");
    EXPECT_EQ(utf16("ü\xc3"), u"ü\uFFFD");
    EXPECT_EQ(utf16("\xc3 ü"), u"\uFFFD ü");
    for (const char *const text :
         {"\x80", "\xc0\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82", "\xf0\x9d\x84"}) {
        EXPECT_EQ(utf16(text), std::u16string(std::strlen(text), u'\uFFFD'));
    }
}

} // namespace
} // namespace quillmark
