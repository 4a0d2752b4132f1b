#include "utils/VersionText.h"
#include "support/LogFixture.h"

#include <csignal>
#include <limits>

namespace quillmark {
namespace {

class VersionText : public test::LogFixture {
protected:
    using Version = MicrosoftStyleVersion;
    static Version parse(const char *text) { return microsoftStyleVersionFromString(text); }
};

TEST_F(VersionText, FourNumbersAreMajorMinorBuildAndRevision) {
    EXPECT_EQ(parse("1.14.4 (1303)"), (Version{1, 14, 4, 1303}));
    EXPECT_EQ(parse("1.14.4.1303"), (Version{1, 14, 4, 1303}));
    EXPECT_EQ(parse("version 3.1.9.0"), (Version{3, 1, 9, 0}));
}

TEST_F(VersionText, OneNumberIsTheMajorOne) {
    EXPECT_EQ(parse("version 5"), (Version{5, 0, 0, 0}));
    EXPECT_EQ(parse("7"), (Version{7, 0, 0, 0}));
}

TEST_F(VersionText, OnlyTheFirstLineCounts) {
    EXPECT_EQ(parse("1.14.4 (1303)\nmore.of.it"), (Version{1, 14, 4, 1303}));
    EXPECT_EQ(parse("2\n1.2.3.4"), (Version{2, 0, 0, 0}));
}

TEST_F(VersionText, TheEmptyTextIsZeroWithoutAnError) {
    const std::string file = logToFile(kLogLevelError);
    EXPECT_EQ(parse(""), (Version{0, 0, 0, 0}));
    EXPECT_EQ(microsoftStyleVersionFromString({}), (Version{0, 0, 0, 0}));
    EXPECT_EQ(contentsOf(file), "");
}

TEST_F(VersionText, AnyOtherCountIsLoggedWithTheWholeTextAndGivesZeros) {
    const std::string file = logToFile(kLogLevelError);
    testing::internal::CaptureStderr();
    for (const char *text : {"1.14.4", "1.2.3.4.5", "1.2", "1 2 3", "a b"}) {
        EXPECT_EQ(parse(text), (Version{0, 0, 0, 0})) << text;
    }
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(messagesOf(file).at(0), "Failed to extract version from string \"1.14.4\"");
    EXPECT_EQ(messagesOf(file).size(), 5U);
}

TEST_F(VersionText, TheLettersAAndBAreDroppedWhereverTheyStand) {
    EXPECT_EQ(parse("1.2.0b3.4"), (Version{1, 2, 3, 4})); // deliberate: 0b3 becomes 03
    EXPECT_EQ(parse("1a2"), (Version{12, 0, 0, 0}));
    EXPECT_EQ(parse("B1"), (Version{0, 0, 0, 0}));
}

TEST_F(VersionText, TheWordVersionGoesOnlyWithItsBlank) {
    EXPECT_EQ(parse("version version 4"), (Version{4, 0, 0, 0}));
    EXPECT_EQ(parse("versions 4"), (Version{0, 0, 0, 0}));
}

TEST_F(VersionText, PiecesAreTheNumbersTheyBeginWith) {
    EXPECT_EQ(parse("1x.y2.+3.-4"), (Version{1, 0, 3, 0}));
    EXPECT_EQ(parse("..."), (Version{0, 0, 0, 0}));
}

TEST_F(VersionText, NumbersBeyond32BitsAreTheLargest) {
    EXPECT_EQ(parse("99999999999"), (Version{std::numeric_limits<std::uint32_t>::max(), 0, 0, 0}));
}

TEST_F(VersionText, TheBuildStandsInParenthesesBehindOneBlank) {
    EXPECT_EQ(buildNumberFromVersionStr("1.14.4 (1303)"), 1303);
    EXPECT_EQ(buildNumberFromVersionStr("x ((7))"), 7);
    EXPECT_EQ(buildNumberFromVersionStr("x 8"), 8);
    EXPECT_EQ(buildNumberFromVersionStr(" )("), 0);
    EXPECT_EQ(buildNumberFromVersionStr("x (-5)"), -5);
}

TEST_F(VersionText, AComponentsVersionHasExactlyThreePieces) {
    EXPECT_EQ(parseVersionString("2.0.1"), (ComponentVersion{2, 0, 1}));
    EXPECT_EQ(parseVersionString("1.x.3"), (ComponentVersion{1, 0, 3}));
    EXPECT_EQ(parseVersionString(" 1.-2.3b"), (ComponentVersion{1, -2, 3}));
    EXPECT_EQ(parseVersionString(".."), (ComponentVersion{0, 0, 0}));
    for (const char *text : {"", "1", "1.2", "1.2.3.4"}) {
        EXPECT_FALSE(parseVersionString(text)) << text;
    }
}

using VersionTextDeathTest = VersionText;

TEST_F(VersionTextDeathTest, AnyOtherNumberOfBlanksEndsTheProcess) {
    for (const char *text : {"", "1.14.4", "1 2 3", "a  b"}) {
        EXPECT_EXIT(buildNumberFromVersionStr(text), testing::KilledBySignal(SIGABRT),
                    "ASSERTION ERROR: \\[vAndB count\\] == 2 \\(file \"utils\"");
    }
}

} // namespace
} // namespace quillmark
