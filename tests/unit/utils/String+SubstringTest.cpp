#include "utils/String+Substring.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(Substring, IsFoundWhateverTheLetterCase) {
    EXPECT_TRUE(hasCaseInsensitiveSubstring("/tmp/macfuse-2.0.pkg", "MacFUSE"));
    EXPECT_FALSE(hasCaseInsensitiveSubstring("Mac FUSE", "MacFUSE"));
}

TEST(Substring, AnEmptyOneIsFoundNowhere) {
    EXPECT_FALSE(hasCaseInsensitiveSubstring("abc", ""));
    EXPECT_FALSE(hasCaseInsensitiveSubstring("", ""));
}

} // namespace
} // namespace quillmark
