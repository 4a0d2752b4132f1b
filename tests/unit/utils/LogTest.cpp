#include "support/LogFixture.h"
#include "utils/CurrentThread.h"
#include "utils/Error.h"
#include "utils/ErrorText.h"
#include "utils/Exception.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <thread>

namespace quillmark {
namespace {

using test::Lines;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

class Log : public test::LogFixture {
protected:
    /// What `action` writes to standard output and to standard error.
    template <class Action>
    static std::pair<std::string, std::string> streamsOf(Action action) {
        CaptureStdout();
        CaptureStderr();
        action();
        std::string output = GetCapturedStdout();
        return {output, GetCapturedStderr()};
    }
    static void logAtEachLevel() {
        logError("one");
        logNormal("two");
        logVerbose("three");
        logDetail("four");
    }
};

TEST_F(Log, BothLevelsAreNormalBeforeAnyInitialisation) {
    EXPECT_EQ(_fileLoggingLevel, 1U);
    EXPECT_EQ(_stdioLoggingLevel, 1U);
    const auto [output, error] = streamsOf(logAtEachLevel);
    EXPECT_NE(error.find("(ERR)"), std::string::npos);
    EXPECT_NE(output.find("two\n"), std::string::npos);
    EXPECT_EQ(output.find("three"), std::string::npos);
    EXPECT_EQ(output.find("four"), std::string::npos);
}

TEST_F(Log, ALineHasTimeProcessLevelThreadAndMessage) {
    const std::string file = logToFile(kLogLevelDetailed);
    std::thread([] { logNormal("Starting"); }).join();
    EXPECT_EQ(contentsOf(file), "2024-03-05 14:15:02.1234 Launcher[311] (nrm) [0x1a03] Starting\n");
}

TEST_F(Log, TheTimeFollowsTheClockWithFourDigitsOfASecond) {
    const std::string file = logToFile(kLogLevelNormal);
    for (const std::int64_t microseconds : {1709648102000099LL, 1709648102999999LL, 1709648103000100LL}) {
        platform.clock.set(Clock::Time(std::chrono::microseconds(microseconds)));
        logNormal("x");
    }
    EXPECT_THAT(test::linesIn(contentsOf(file)),
                ElementsAre(StartsWith("2024-03-05 14:15:02.0000 "), StartsWith("2024-03-05 14:15:02.9999 "),
                            StartsWith("2024-03-05 14:15:03.0001 ")));
}

TEST_F(Log, EachLevelHasItsTag) {
    const std::string file = logToFile(kLogLevelDetailed);
    _setStandardStreams(nullptr, nullptr);
    logAtEachLevel();
    EXPECT_THAT(test::linesIn(contentsOf(file)),
                ElementsAre(HasSubstr("(ERR) ["), HasSubstr("(nrm) ["), HasSubstr("(vrb) ["), HasSubstr("(dtl) [")));
}

TEST_F(Log, AnyOtherLevelIsTaggedNormal) {
    const std::string file = logToFile(7);
    _log(5, "odd", {});
    EXPECT_THAT(contentsOf(file), HasSubstr("(nrm) "));
}

TEST_F(Log, EachSinkTakesTheLinesUpToItsOwnLevel) {
    const std::string file = logToFile(kLogLevelVerbose, kLogLevelError);
    const auto [output, error] = streamsOf([] {
        logNormal("to the file only");
        logError("to both");
        logDetail("to none");
    });
    EXPECT_EQ(output, "");
    EXPECT_NE(error.find("to both\n"), std::string::npos);
    EXPECT_EQ(messagesOf(file), (Lines{"to the file only", "to both"}));
}

TEST_F(Log, OnlyErrorsGoToStandardErrorAllElseToStandardOutput) {
    logToFile(kLogLevelError, kLogLevelDetailed);
    const auto [output, error] = streamsOf(logAtEachLevel);
    EXPECT_EQ(std::count(error.begin(), error.end(), '\n'), 1);
    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 3);
}

TEST_F(Log, AProgramCanTakeTheStandardStreamsAway) {
    logToFile(kLogLevelError, kLogLevelDetailed);
    _setStandardStreams(nullptr, nullptr);
    EXPECT_EQ(streamsOf(logAtEachLevel), std::pair(std::string(), std::string()));
    _setStandardStreams(stderr, stderr);
    const auto [output, error] = streamsOf([] { logNormal("n"); });
    EXPECT_EQ(output, "");
    EXPECT_NE(error.find("n\n"), std::string::npos);
}

TEST_F(Log, VisibilityIsThatOfTheMoreTalkativeSink) {
    logToFile(kLogLevelVerbose, kLogLevelError);
    EXPECT_TRUE(_isLogLevelVisible(2));
    EXPECT_FALSE(_isLogLevelVisible(3));
    EXPECT_TRUE(isLogVerboseVisible());
    EXPECT_FALSE(isLogDetailVisible());
    logToFile(kLogLevelError, kLogLevelDetailed);
    EXPECT_TRUE(isLogDetailVisible());
    logToFile(kLogLevelNormal, kLogLevelNormal);
    EXPECT_FALSE(isLogVerboseVisible());
}

TEST_F(Log, ASuppressedLineIsNotFormatted) {
    logToFile(kLogLevelError, kLogLevelError);
    const auto [output, error] = streamsOf([] { logNormal("%d", "a mismatch would be reported"); });
    EXPECT_EQ(output + error, "");
}

TEST_F(Log, AFormatThatEndsTheLineIsNotGivenAnotherEnd) {
    const std::string file = logToFile(kLogLevelNormal);
    logNormal("a\n");
    logNormal("b");
    const std::string contents = contentsOf(file);
    EXPECT_TRUE(contents.ends_with("a\n" + test::linesIn(contents).at(1) + '\n'));
    EXPECT_EQ(std::count(contents.begin(), contents.end(), '\n'), 2);
}

TEST_F(Log, TheLineEndIsSoughtInTheFormatAndNotInTheMessage) {
    const std::string file = logToFile(kLogLevelNormal);
    logNormal("%@", "a\n"); // deliberate: an argument's line end does not count
    EXPECT_TRUE(contentsOf(file).ends_with("a\n\n"));
}

TEST_F(Log, AnEmptyFormatWritesAnEmptyMessage) {
    const std::string file = logToFile(kLogLevelNormal);
    logNormal("");
    EXPECT_EQ(messagesOf(file), Lines{""});
}

TEST_F(Log, AnAbsentFormatDropsTheLine) {
    const std::string file = logToFile(kLogLevelNormal);
    logNormal(static_cast<const char *>(nullptr));
    EXPECT_EQ(contentsOf(file), "");
}

TEST_F(Log, APercentSignInAMessageIsNoDirective) {
    const std::string file = logToFile(kLogLevelNormal);
    logNormal("%@", "100 %d %s %@");
    EXPECT_EQ(messagesOf(file), Lines{"100 %d %s %@"});
}

TEST_F(Log, AFormatThatDoesNotMatchIsWrittenAsItIsWithAnErrorLine) {
    const std::string file = logToFile(kLogLevelNormal);
    CaptureStderr();
    logNormal("%d", "text");
    EXPECT_NE(GetCapturedStderr().find("could not be formatted"), std::string::npos);
    EXPECT_EQ(messagesOf(file).at(0), "%d");
    EXPECT_EQ(messagesOf(file).size(), 2U);
}

TEST_F(Log, AZeroByteEndsTheLineAsCStringsDo) {
    const std::string file = logToFile(kLogLevelNormal);
    logNormal("%@", std::string("ab\0cd", 5));
    EXPECT_TRUE(contentsOf(file).ends_with("] ab"));
}

TEST_F(Log, LongMessagesAreWrittenWhole) {
    const std::string file = logToFile(kLogLevelNormal);
    const std::string text = test::repeated("ä", 100'000);
    logNormal("%@", text);
    EXPECT_EQ(messagesOf(file), Lines{text});
}

TEST_F(Log, ANamedThreadsLinesCarryItsNameEvenWhenItIsEmpty) {
    const std::string file = logToFile(kLogLevelNormal);
    std::thread([] {
        setCurrentThreadName("repair");
        logNormal("1");
        setCurrentThreadName("");
        logNormal("2");
        setCurrentThreadName(std::nullopt);
        logNormal("3");
    }).join();
    EXPECT_THAT(test::linesIn(contentsOf(file)),
                ElementsAre(EndsWith("(nrm) [repair] 1"), EndsWith("(nrm) [] 2"), EndsWith("(nrm) [0x1a03] 3")));
}

TEST_F(Log, TheThreadNumberIsLowerCaseHexWithoutPadding) {
    platform.systemInfo.threadNumber = 0xABC;
    std::string prefix;
    std::thread([&prefix] { prefix = currentThreadLogPrefix(); }).join();
    EXPECT_EQ(prefix, "[0xabc] ");
}

TEST_F(Log, ErrorsAreLoggedByReasonAndDescription) {
    const std::string file = logToFile(kLogLevelError);
    _setStandardStreams(nullptr, nullptr);
    logNSError({"d", 1, {{kLocalizedFailureReasonKey, "r"}, {kLocalizedDescriptionKey, "t"}}});
    EXPECT_TRUE(contentsOf(file).ends_with("Error:\n\"r\" because \"t\"\n"));
}

TEST_F(Log, ExceptionsAreLoggedByTheirRendering) {
    const std::string file = logToFile(kLogLevelError);
    _setStandardStreams(nullptr, nullptr);
    logErrorException(Exception("Configuration Fault", "50% lost"));
    EXPECT_EQ(messagesOf(file), Lines{"Configuration Fault (50% lost)"});
}

TEST_F(Log, PrintfIgnoresTheLevelsAndAddsALineEnd) {
    logToFile(kLogLevelError, kLogLevelError);
    const auto [output, error] = streamsOf([] {
        NSPrintf("%@ %d\n", "a", 1);
        NSPrintErrf("%@", "b");
        NSPrintf(static_cast<const char *>(nullptr));
    });
    EXPECT_EQ(output, "a 1\n\n");
    EXPECT_EQ(error, "b\n");
}

TEST_F(Log, OnlyCarriageReturnsAreRemovedDespiteTheName) { EXPECT_EQ(_removeNewLinesInString("a\r\nb\r"), "a\nb"); }

TEST_F(Log, LevelsHaveTheNamesOfTheConfiguration) {
    EXPECT_EQ(_loggingLevelToString(0), "error");
    EXPECT_EQ(_loggingLevelToString(1), "normal");
    EXPECT_EQ(_loggingLevelToString(2), "verbose");
    EXPECT_EQ(_loggingLevelToString(3), "detailed");
    logToFile(kLogLevelVerbose, kLogLevelError);
    EXPECT_EQ(loggingLevelStrFile(), "verbose");
    EXPECT_EQ(loggingLevelStrStdio(), "error");
}

TEST_F(Log, AnyOtherLevelNumberIsAConfigurationFault) {
    EXPECT_THAT([] { _loggingLevelToString(4); },
                testing::ThrowsMessage<Exception>("Configuration Fault (Invalid logging level 4)"));
}

} // namespace
} // namespace quillmark
