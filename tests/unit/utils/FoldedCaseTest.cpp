#include "utils/FoldedCase.h"

#include <clocale>
#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(FoldedCase, MakesTextsAlikeThatDifferInLetterCaseAlone) {
    EXPECT_EQ(foldedCase("STRASSE 7"), foldedCase("strasse 7"));
    EXPECT_EQ(foldedCase("ÄÖÜ"), foldedCase("äöü"));
    EXPECT_EQ(foldedCase("ÉÑŁŽ"), foldedCase("éñłž"));
    EXPECT_EQ(foldedCase("ДЖЯ"), foldedCase("джя"));
    EXPECT_EQ(foldedCase("ԱԲ"), foldedCase("աբ"));
    EXPECT_EQ(foldedCase("𐐀"), foldedCase("𐐨")); // beyond U+FFFF
}

TEST(FoldedCase, MakesAllFormsOfALetterAlike) {
    EXPECT_EQ(foldedCase("Σ"), foldedCase("σ"));
    EXPECT_EQ(foldedCase("ς"), foldedCase("σ"));
    EXPECT_EQ(foldedCase("µ"), foldedCase("μ")); // the sign and the letter
    EXPECT_EQ(foldedCase("ſ"), foldedCase("s"));
}

TEST(FoldedCase, LeavesTheTurkishLettersWhoseOtherCaseDependsOnTheLanguage) {
    EXPECT_NE(foldedCase("ı"), foldedCase("i"));
    EXPECT_NE(foldedCase("İ"), foldedCase("i"));
    EXPECT_EQ(foldedCase("I"), foldedCase("i"));
}

TEST(FoldedCase, LetsEachCharacterStandForItself) {
    EXPECT_EQ(foldedCase("ß").size(), 1U);
    EXPECT_NE(foldedCase("ß"), foldedCase("ss"));
    EXPECT_NE(foldedCase("ﬁ"), foldedCase("fi"));
    EXPECT_NE(foldedCase("é"), foldedCase("e"));
    EXPECT_NE(foldedCase("é"), foldedCase("e\u0301"));
    EXPECT_EQ(foldedCase("aü€𝄞").size(), 4U);
}

TEST(FoldedCase, LeavesWhatIsNoLetter) {
    EXPECT_EQ(foldedCase(""), U"");
    EXPECT_EQ(foldedCase("1 [`{\t€日𝄞"), U"1 [`{\t€日𝄞");
    EXPECT_EQ(foldedCase({"a\0b", 3}), std::u32string_view(U"a\0b", 3));
    EXPECT_EQ(foldedCase("a\xff\xc3"), U"a\uFFFD\uFFFD");
}

TEST(FoldedCase, IsTheSameInAnyLanguage) {
    for (const char *language : {"C.UTF-8", "tr_TR.UTF-8", "C"}) { // one that is not installed changes nothing
        std::setlocale(LC_ALL, language);
        EXPECT_EQ(foldedCase("ÄΣI"), foldedCase("äσi")) << language;
    }
}

} // namespace
} // namespace quillmark
