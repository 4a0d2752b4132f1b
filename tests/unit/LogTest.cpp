#include "support/LogFixture.h"
#include "utils/CurrentThread.h"
#include "utils/Error.h"
#include "utils/ErrorText.h"
#include "utils/Exception.h"

#include <thread>

namespace quillmark {
namespace {

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
};

TEST_F(Log, BothLevelsAreNormalBeforeAnyInitialisation) {
    EXPECT_EQ(_fileLoggingLevel, 1U);
    EXPECT_EQ(_stdioLoggingLevel, 1U);
    const auto [output, error] = streamsOf([] {
        logError("one");
        logNormal("two");
        logVerbose("three");
        logDetail("four");
    });
    EXPECT_NE(error.find("(ERR)"), std::string::npos);
    EXPECT_NE(output.find("two\n"), std::string::npos);
    EXPECT_EQ(output.find("three"), std::string::npos);
    EXPECT_EQ(output.find("four"), std::string::npos);
}

TEST_F(Log, ALineHasTimeProcessLevelThreadAndMessage) {
    const QString file = logToFile(kLogLevelDetailed);
    std::thread([] { logNormal("Starting"); }).join();
    EXPECT_EQ(contentsOf(file), "2024-03-05 14:15:02.1234 Launcher[311] (nrm) [0x1a03] Starting\n");
}

TEST_F(Log, TheTimeFollowsTheClockWithFourDigitsOfASecond) {
    const QString file = logToFile(kLogLevelNormal);
    for (const qint64 microseconds : {1709648102000099LL, 1709648102999999LL, 1709648103000100LL}) {
        platform.clock.set(Clock::Time(std::chrono::microseconds(microseconds)));
        logNormal("x");
    }
    const QList<QByteArray> lines = contentsOf(file).split('\n');
    EXPECT_TRUE(lines[0].startsWith("2024-03-05 14:15:02.0000 "));
    EXPECT_TRUE(lines[1].startsWith("2024-03-05 14:15:02.9999 "));
    EXPECT_TRUE(lines[2].startsWith("2024-03-05 14:15:03.0001 "));
}

TEST_F(Log, EachLevelHasItsTag) {
    const QString file = logToFile(kLogLevelDetailed);
    CaptureStderr();
    logError("0");
    logNormal("1");
    logVerbose("2");
    logDetail("3");
    GetCapturedStderr();
    const QList<QByteArray> lines = contentsOf(file).split('\n');
    EXPECT_TRUE(lines[0].contains("(ERR) [")) << lines[0].toStdString();
    EXPECT_TRUE(lines[1].contains("(nrm) ["));
    EXPECT_TRUE(lines[2].contains("(vrb) ["));
    EXPECT_TRUE(lines[3].contains("(dtl) ["));
}

TEST_F(Log, AnyOtherLevelIsTaggedNormal) {
    const QString file = logToFile(7);
    _log(5, "odd", {});
    EXPECT_TRUE(contentsOf(file).contains("(nrm) "));
}

TEST_F(Log, EachSinkTakesTheLinesUpToItsOwnLevel) {
    const QString file = logToFile(kLogLevelVerbose, kLogLevelError);
    const auto [output, error] = streamsOf([] {
        logNormal("to the file only");
        logError("to both");
        logDetail("to none");
    });
    EXPECT_EQ(output, "");
    EXPECT_NE(error.find("to both\n"), std::string::npos);
    EXPECT_EQ(messagesOf(file), QStringList({QStringLiteral("to the file only"), QStringLiteral("to both")}));
}

TEST_F(Log, OnlyErrorsGoToStandardErrorAllElseToStandardOutput) {
    logToFile(kLogLevelError, kLogLevelDetailed);
    const auto [output, error] = streamsOf([] {
        logError("e");
        logNormal("n");
        logVerbose("v");
        logDetail("d");
    });
    EXPECT_EQ(std::count(error.begin(), error.end(), '\n'), 1);
    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 3);
}

TEST_F(Log, AProgramCanTakeTheStandardStreamsAway) {
    logToFile(kLogLevelError, kLogLevelDetailed);
    _setStandardStreams(nullptr, nullptr);
    EXPECT_EQ(streamsOf([] {
                  logError("e");
                  logNormal("n");
              }),
              std::pair(std::string(), std::string()));
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
    const auto [output, error] = streamsOf([] { logNormal("%d", QStringLiteral("a mismatch would be reported")); });
    EXPECT_EQ(output + error, "");
}

TEST_F(Log, AFormatThatEndsTheLineIsNotGivenAnotherEnd) {
    const QString file = logToFile(kLogLevelNormal);
    logNormal("a\n");
    logNormal("b");
    EXPECT_TRUE(contentsOf(file).endsWith("a\n" + contentsOf(file).split('\n')[1] + '\n'));
    EXPECT_EQ(contentsOf(file).count('\n'), 2);
}

TEST_F(Log, TheLineEndIsSoughtInTheFormatAndNotInTheMessage) {
    const QString file = logToFile(kLogLevelNormal);
    logNormal("%@", QStringLiteral("a\n")); // deliberate: an argument's line end does not count
    EXPECT_TRUE(contentsOf(file).endsWith("a\n\n"));
}

TEST_F(Log, AnEmptyFormatWritesAnEmptyMessage) {
    const QString file = logToFile(kLogLevelNormal);
    logNormal("");
    EXPECT_EQ(messagesOf(file), QStringList({QStringLiteral("")}));
}

TEST_F(Log, AnAbsentFormatDropsTheLine) {
    const QString file = logToFile(kLogLevelNormal);
    logNormal(QString());
    logNormal(static_cast<const char *>(nullptr));
    EXPECT_EQ(contentsOf(file), "");
}

TEST_F(Log, APercentSignInAMessageIsNoDirective) {
    const QString file = logToFile(kLogLevelNormal);
    logNormal("%@", QStringLiteral("100 %d %s %@"));
    EXPECT_EQ(messagesOf(file), QStringList({QStringLiteral("100 %d %s %@")}));
}

TEST_F(Log, AFormatThatDoesNotMatchIsWrittenAsItIsWithAnErrorLine) {
    const QString file = logToFile(kLogLevelNormal);
    CaptureStderr();
    logNormal("%d", QStringLiteral("text"));
    EXPECT_NE(GetCapturedStderr().find("could not be formatted"), std::string::npos);
    EXPECT_EQ(messagesOf(file).first(), QStringLiteral("%d"));
    EXPECT_EQ(messagesOf(file).size(), 2);
}

TEST_F(Log, AZeroByteEndsTheLineAsCStringsDo) {
    const QString file = logToFile(kLogLevelNormal);
    logNormal("%@", QStringLiteral("ab") + QChar(0) + QStringLiteral("cd"));
    EXPECT_TRUE(contentsOf(file).endsWith("] ab"));
}

TEST_F(Log, LongMessagesAreWrittenWhole) {
    const QString file = logToFile(kLogLevelNormal);
    const QString text(100000, u'ä');
    logNormal("%@", text);
    EXPECT_EQ(messagesOf(file), QStringList({text}));
}

TEST_F(Log, ANamedThreadsLinesCarryItsNameEvenWhenItIsEmpty) {
    const QString file = logToFile(kLogLevelNormal);
    std::thread([] {
        setCurrentThreadName("repair");
        logNormal("1");
        setCurrentThreadName("");
        logNormal("2");
        setCurrentThreadName(std::nullopt);
        logNormal("3");
    }).join();
    const QList<QByteArray> lines = contentsOf(file).split('\n');
    EXPECT_TRUE(lines[0].endsWith("(nrm) [repair] 1"));
    EXPECT_TRUE(lines[1].endsWith("(nrm) [] 2"));
    EXPECT_TRUE(lines[2].endsWith("(nrm) [0x1a03] 3"));
}

TEST_F(Log, TheThreadNumberIsLowerCaseHexWithoutPadding) {
    platform.systemInfo.threadNumber = 0xABC;
    std::string prefix;
    std::thread([&prefix] { prefix = currentThreadLogPrefix(); }).join();
    EXPECT_EQ(prefix, "[0xabc] ");
}

TEST_F(Log, ErrorsAreLoggedByReasonAndDescription) {
    const QString file = logToFile(kLogLevelError);
    CaptureStderr();
    logNSError({QStringLiteral("d"),
                1,
                {{kLocalizedFailureReasonKey, QStringLiteral("r")}, {kLocalizedDescriptionKey, QStringLiteral("t")}}});
    GetCapturedStderr();
    EXPECT_TRUE(contentsOf(file).endsWith("Error:\n\"r\" because \"t\"\n"));
}

TEST_F(Log, ExceptionsAreLoggedByTheirRendering) {
    const QString file = logToFile(kLogLevelError);
    CaptureStderr();
    logErrorException(Exception(QStringLiteral("Configuration Fault"), QStringLiteral("50% lost")));
    GetCapturedStderr();
    EXPECT_EQ(messagesOf(file), QStringList({QStringLiteral("Configuration Fault (50% lost)")}));
}

TEST_F(Log, PrintfIgnoresTheLevelsAndAddsALineEnd) {
    logToFile(kLogLevelError, kLogLevelError);
    const auto [output, error] = streamsOf([] {
        NSPrintf("%@ %d\n", QStringLiteral("a"), 1);
        NSPrintErrf("%@", QStringLiteral("b"));
        NSPrintf(QString());
    });
    EXPECT_EQ(output, "a 1\n\n");
    EXPECT_EQ(error, "b\n");
}

TEST_F(Log, OnlyCarriageReturnsAreRemovedDespiteTheName) {
    EXPECT_EQ(_removeNewLinesInString(QStringLiteral("a\r\nb\r")), QStringLiteral("a\nb"));
}

TEST_F(Log, LevelsHaveTheNamesOfTheConfiguration) {
    EXPECT_EQ(_loggingLevelToString(0), QStringLiteral("error"));
    EXPECT_EQ(_loggingLevelToString(1), QStringLiteral("normal"));
    EXPECT_EQ(_loggingLevelToString(2), QStringLiteral("verbose"));
    EXPECT_EQ(_loggingLevelToString(3), QStringLiteral("detailed"));
    logToFile(kLogLevelVerbose, kLogLevelError);
    EXPECT_EQ(loggingLevelStrFile(), QStringLiteral("verbose"));
    EXPECT_EQ(loggingLevelStrStdio(), QStringLiteral("error"));
}

TEST_F(Log, AnyOtherLevelNumberIsAConfigurationFault) {
    try {
        _loggingLevelToString(4);
        FAIL() << "nothing was raised";
    } catch (const Exception &exception) {
        EXPECT_EQ(exception.name(), QStringLiteral("Configuration Fault"));
        EXPECT_EQ(exception.reason(), QStringLiteral("Invalid logging level 4"));
    }
}

} // namespace
} // namespace quillmark
