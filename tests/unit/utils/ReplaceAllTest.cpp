#include "utils/ReplaceAll.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

std::string replaced(std::string text, std::string_view what, std::string_view by) {
    replaceAll(text, what, by);
    return text;
}

TEST(ReplaceAll, PutsATextInThePlaceOfEveryOccurrence) {
    EXPECT_EQ(replaced("a-b-c-", "-", ", "), "a, b, c, ");
    EXPECT_EQ(replaced("%@%@", "%@", ""), "");
    EXPECT_EQ(replaced("ab", "ab", "c"), "c");
}

TEST(ReplaceAll, LeavesATextWithoutOneAsItIs) {
    EXPECT_EQ(replaced("abc", "ac", "x"), "abc");
    EXPECT_EQ(replaced("", "a", "x"), "");
    EXPECT_EQ(replaced("a", "aa", "x"), "a");
}

TEST(ReplaceAll, DoesNotLookAtWhatWasPutIn) {
    EXPECT_EQ(replaced("aa", "a", "aa"), "aaaa");
    EXPECT_EQ(replaced("aab", "ab", "b"), "ab");
}

TEST(ReplaceAll, TakesTheFirstOfTwoThatOverlap) { EXPECT_EQ(replaced("aaa", "aa", "b"), "ba"); }

} // namespace
} // namespace quillmark
