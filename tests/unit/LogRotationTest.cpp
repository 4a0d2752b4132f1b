#include "support/LogFixture.h"
#include "utils/Exception.h"
#include "utils/LogFile.h"

#include <QFileInfo>
#include <cstdio>
#include <unistd.h>

namespace quillmark {
namespace {

constexpr qint64 k4GiB = 1LL << 32;

/// Logs into a file of a given length, by way of the whole set-up, so that a next file can be named.
class LogRotation : public test::LogFixture {
protected:
    QString setUp() {
        return initLogging3(QStringLiteral("normal"), QStringLiteral("error"), home.path(), QStringLiteral("Q"),
                            QStringLiteral("Q"));
    }
    /// A sparse file stands in for a full one.
    static void grow(const QString &path, qint64 length) {
        _flushLog();
        ASSERT_EQ(::truncate(QFile::encodeName(path).constData(), length), 0);
    }
    void passSeconds(int seconds) { platform.clock.set(platform.clock.now() + std::chrono::seconds(seconds)); }
    static void logLines(int count) {
        for (int i = 0; i < count; ++i) {
            logNormal("line");
        }
    }
    /// Brings the countdown to its start, whatever earlier tests left of it.
    void startCountdown() {
        const QString scratch = setUp();
        grow(scratch, kMaxLogFileLength + 1);
        passSeconds(1);
        while (getLogFilePath() == scratch) {
            logNormal("until the length is looked at");
        }
        passSeconds(1);
    }
};

TEST_F(LogRotation, TheConstantsAreFiftyMebibytesAndFiveHundredLines) {
    EXPECT_EQ(kMaxLogFileLength, 52428800);
    EXPECT_EQ(kExamineLogFileLengthEveryNLines, 500);
}

TEST_F(LogRotation, TheLengthIsLookedAtWithEvery501stLine) {
    startCountdown();
    const QString file = setUp();
    grow(file, kMaxLogFileLength + 1);
    passSeconds(5);
    logLines(500);
    EXPECT_EQ(getLogFilePath(), file); // deliberate: the constant says 500, the count is 501
    logLines(1);
    EXPECT_EQ(getLogFilePath(), home.path(QStringLiteral("Q-2024-03-05-141509.log")));
    logLines(1);
    EXPECT_EQ(contentsOf(getLogFilePath()).count('\n'), 1);
}

TEST_F(LogRotation, AFileOfExactlyTheLimitStays) {
    startCountdown();
    const QString file = setUp();
    logLines(500);
    _flushLog();
    const QByteArray line = contentsOf(file).split('\n').first() + '\n';
    grow(file, kMaxLogFileLength - line.size());
    passSeconds(5);
    logLines(1); // makes it exactly the limit, and is the line at which the length is looked at
    EXPECT_EQ(getLogFilePath(), file);
    logLines(500);
    EXPECT_EQ(getLogFilePath(), file);
    logLines(1);
    EXPECT_NE(getLogFilePath(), file);
}

TEST_F(LogRotation, AFileOfOneByteMoreDoesNot) {
    startCountdown();
    const QString file = setUp();
    logLines(500);
    const QByteArray line = contentsOf(file).split('\n').first() + '\n';
    grow(file, kMaxLogFileLength + 1 - line.size());
    passSeconds(5);
    logLines(1);
    EXPECT_NE(getLogFilePath(), file);
    EXPECT_EQ(QFileInfo(file).size(), 52428801);
}

TEST_F(LogRotation, TheOldFileIsLeftAsItIs) {
    startCountdown();
    const QString file = setUp();
    grow(file, kMaxLogFileLength + 1);
    passSeconds(5);
    logLines(502);
    _flushLog();
    EXPECT_GT(QFileInfo(file).size(), kMaxLogFileLength + 1);
    EXPECT_TRUE(QFile::exists(file));
}

TEST_F(LogRotation, TwoRotationsWithinOneSecondGoOnInTheSameFile) {
    startCountdown();
    const QString file = setUp();
    grow(file, kMaxLogFileLength + 1);
    logLines(501); // the clock stands still: the next file has the same name
    EXPECT_EQ(getLogFilePath(), file);
    logNormal("appended");
    _flushLog();
    EXPECT_GT(QFileInfo(file).size(), kMaxLogFileLength + 1);
}

TEST_F(LogRotation, LengthsCountModulo4GiB) {
    startCountdown();
    const QString file = setUp();
    grow(file, k4GiB + 1000); // deliberate: measured with 32 bits, this is a short file
    passSeconds(5);
    logLines(501);
    EXPECT_EQ(getLogFilePath(), file);
    grow(file, k4GiB + kMaxLogFileLength + 1);
    logLines(501);
    EXPECT_NE(getLogFilePath(), file);
}

TEST_F(LogRotation, APathThatCannotBeMadeLeavesTheOldFileOpenUntilTheNextLook) {
    startCountdown();
    const QString folder = home.makeFolder(QStringLiteral("x/logs"));
    const QString file = initLogging3(QStringLiteral("normal"), QStringLiteral("error"), folder, QStringLiteral("Q"),
                                      QStringLiteral("Q"));
    grow(file, kMaxLogFileLength + 1);
    passSeconds(5);
    ASSERT_TRUE(QDir().rename(home.path(QStringLiteral("x")), home.path(QStringLiteral("moved"))));
    home.write(QStringLiteral("x"), "a file in the way, so that the folder can't be made again");
    logLines(501);
    EXPECT_EQ(getLogFilePath(), file);
    logLines(500);
    EXPECT_TRUE(contentsOf(home.path(QStringLiteral("moved/logs/") + file.section(u'/', -1))).endsWith("line\n"));
    ASSERT_TRUE(QFile::remove(home.path(QStringLiteral("x"))));
    logLines(1);
    EXPECT_NE(getLogFilePath(), file);
}

TEST_F(LogRotation, ANextFileThatCannotBeOpenedIsAConfigurationFaultAsAtSetUp) {
    startCountdown();
    const QString folder = home.makeFolder(QStringLiteral("logs"));
    const QString file = initLogging3(QStringLiteral("normal"), QStringLiteral("error"), folder, QStringLiteral("Q"),
                                      QStringLiteral("Q"));
    grow(file, kMaxLogFileLength + 1);
    passSeconds(5);
    const QString next = home.makeFolder(QStringLiteral("logs/Q-2024-03-05-141509.log"));
    try {
        logLines(501);
        FAIL() << "nothing was raised";
    } catch (const Exception &exception) {
        EXPECT_EQ(exception.reason(), QStringLiteral("Failed to open log file \"%1\" for writing").arg(next));
    }
    logNormal("lost, and not an error");
}

TEST_F(LogRotation, AFolderThatIsGoneIsMadeAgain) {
    startCountdown();
    const QString folder = home.makeFolder(QStringLiteral("logs"));
    const QString file = initLogging3(QStringLiteral("verbose"), QStringLiteral("error"), folder, QStringLiteral("Q"),
                                      QStringLiteral("Q"));
    grow(file, kMaxLogFileLength + 1);
    passSeconds(5);
    ASSERT_TRUE(QDir().rename(folder, home.path(QStringLiteral("moved"))));
    logLines(502);
    EXPECT_TRUE(QFile::exists(getLogFilePath()));
    EXPECT_NE(getLogFilePath(), file);
    EXPECT_TRUE(messagesOf(getLogFilePath()).contains(QStringLiteral("line")));
}

TEST_F(LogRotation, TheLengthOfNoStreamIsAllOnes) { EXPECT_EQ(_fileLength(nullptr), 0xFFFFFFFFU); }

TEST_F(LogRotation, MeasuringALengthKeepsThePosition) {
    const QString path = home.write(QStringLiteral("f"), "0123456789");
    FILE *stream = std::fopen(QFile::encodeName(path).constData(), "r");
    ASSERT_NE(stream, nullptr);
    std::fseek(stream, 4, SEEK_SET);
    EXPECT_EQ(_fileLength(stream), 10U);
    EXPECT_EQ(std::ftell(stream), 4);
    std::fclose(stream);
}

} // namespace
} // namespace quillmark
