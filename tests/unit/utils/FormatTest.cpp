#include "support/LogFixture.h"
#include "utils/FormattedText.h"

#include <limits>

namespace quillmark {
namespace {

class Format : public test::LogFixture {
protected:
    Format() { _setStandardStreams(nullptr, nullptr); } // for the errors that are told of
};

TEST_F(Format, AnObjectDirectivePrintsATextOrANumber) {
    EXPECT_EQ(formatted("%@ (%d)", "1.14.4", 1303), "1.14.4 (1303)");
    EXPECT_EQ(formatted("%@ %@ %@", 7, 2.5, std::string("x")), "7 2.5 x");
}

TEST_F(Format, AbsentTextsPrintAsNull) {
    const std::optional<std::string_view> noView;
    const std::optional<std::string> noText;
    EXPECT_EQ(formatted("\"%@\" %s", noView, static_cast<const char *>(nullptr)), "\"(null)\" (null)");
    EXPECT_EQ(formatted("%@", noText), "(null)");
}

TEST_F(Format, AnEmptyTextPrintsAsNothing) { EXPECT_EQ(formatted("[%@]", ""), "[]"); }

TEST_F(Format, NumbersTakeFlagsWidthAndModifiers) {
    EXPECT_EQ(formatted("%05d|%-4d|%x|%0llx|%ld|%qd", 42, 7, 255U, 0x1a03ULL, -5L, 9), "00042|7   |ff|1a03|-5|9");
    EXPECT_EQ(formatted("%.2f %c %i %%", 1.239, 'a', 3), "1.24 a 3 %");
}

TEST_F(Format, TheRangeOf64BitsIsKept) {
    EXPECT_EQ(
        formatted("%lld %llu", std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::uint64_t>::max()),
        "-9223372036854775808 18446744073709551615");
}

TEST_F(Format, PositionsReorderTheArguments) {
    EXPECT_EQ(formatted("%2$@ %1$@", "a", "b"), "b a");
    EXPECT_EQ(formatted("%2$@ %1$d", 1, 2), "2 1");
}

TEST_F(Format, AStarTakesTheWidthFromTheArguments) { EXPECT_EQ(formatted("[%*d] %@", 4, 7, "x"), "[   7] x"); }

TEST_F(Format, TextOutsideAsciiSurvives) {
    EXPECT_EQ(formatted("%@ – %@", "Größe", "日本語 🪶"), "Größe – 日本語 🪶");
}

TEST_F(Format, ArgumentsTooManyAreIgnored) { EXPECT_EQ(formatted("%d", 1, 2, 3), "1"); }

TEST_F(Format, AFormatWithoutDirectivesComesBackAsItIs) { EXPECT_EQ(formatted("plain"), "plain"); }

TEST_F(Format, AnAbsentFormatGivesANullText) {
    const char *const absent = nullptr;
    EXPECT_EQ(_formatted(absent, {}), std::nullopt);
    EXPECT_EQ(formatted(absent), "");
}

TEST_F(Format, AMismatchGivesTheFormatItselfAndAnErrorLine) {
    const std::string file = logToFile(kLogLevelError);
    _setStandardStreams(stderr, stdout);
    for (const char *format : {"%d", "%@ %@", "%", "%1", "%y", "%20$@", "%999999999999999999999$@"}) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(formatted(format, "text"), format);
        EXPECT_NE(testing::internal::GetCapturedStderr().find(std::string("The text \"") + format + "\""),
                  std::string::npos);
    }
    EXPECT_EQ(messagesOf(file).size(), 7U);
}

TEST_F(Format, ATextNeverReachesANumberConversionAsAPointer) {
    EXPECT_EQ(formatted("%s", 5), "%s");
    EXPECT_EQ(formatted("%n", 5), "%n");
}

TEST_F(Format, AFieldThatWouldTakeMegabytesIsRefused) {
    EXPECT_EQ(formatted("%4096d", 1).size(), 4096U);
    EXPECT_EQ(formatted("%4097d", 1), "%4097d");
    EXPECT_EQ(formatted("%.999999999f", 1.0), "%.999999999f");
    EXPECT_EQ(formatted("%*d", 999999999, 1), "%*d");
    EXPECT_EQ(formatted("%*d", "wide", 1), "%*d");
}

TEST_F(Format, MoreThanSixteenArgumentsAreRefused) {
    EXPECT_EQ(formatted("%d", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17), "%d");
}

} // namespace
} // namespace quillmark
