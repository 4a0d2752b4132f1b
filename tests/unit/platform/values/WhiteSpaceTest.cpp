#include "platform/values/WhiteSpace.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(Trimmed, LosesTheWhiteSpaceAroundItAndNoneWithin) {
    EXPECT_EQ(trimmed(" a b\t"), "a b");
    EXPECT_EQ(trimmed("\r\n \v\fa"), "a");
    EXPECT_EQ(trimmed("a"), "a");
}

TEST(Trimmed, IsEmptyWhenThereIsNothingElse) {
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(trimmed(" \n\u3000 "), "");
}

TEST(Trimmed, TakesAllThatUnicodeCallsSoForWhiteSpace) {
    for (const char *const space :
         {"\u0085", "\u00A0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007",
          "\u2008", "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000"}) {
        EXPECT_EQ(trimmed(std::string(space) + 'a' + space + ' '), "a");
    }
}

TEST(Trimmed, KeepsWhatOnlyLooksLikeWhiteSpace) {
    for (const char *const other : {"\x08", "\x1c", "\u180E", "\u200B", "\u2060", "\uFEFF", "à", "\xA0"}) {
        EXPECT_EQ(trimmed(other), other);
    }
    EXPECT_EQ(trimmed(std::string_view("\0 ", 2)), std::string_view("\0", 1));
}

TEST(Trimmed, LiesInTheTextItself) {
    const std::string text = " a ";
    EXPECT_EQ(trimmed(text).data(), text.data() + 1);
}

TEST(Simplified, HasOneBlankInPlaceOfAllWhiteSpaceWithin) {
    EXPECT_EQ(simplified(" a \t b\r\n\u2003c "), "a b c");
    EXPECT_EQ(simplified("a\u00A0ü"), "a ü");
    EXPECT_EQ(simplified("ab"), "ab");
    EXPECT_EQ(simplified(" \n "), "");
}

} // namespace
} // namespace quillmark
