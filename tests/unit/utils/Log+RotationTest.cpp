#include "platform/files/Path.h"
#include "support/LogFixture.h"
#include "utils/Exception.h"
#include "utils/LogFile.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <unistd.h>

namespace quillmark {
namespace {

constexpr std::int64_t k4GiB = 1LL << 32;

/// Logs into a file of a given length, by way of the whole set-up, so that a next file can be named.
class LogRotation : public test::LogFixture {
protected:
    std::string setUp() { return setUpIn(home.path()); }
    static std::string setUpIn(const std::string &folder) { return initLogging3("normal", "error", folder, "Q", "Q"); }
    /// A sparse file stands in for a full one.
    static void grow(const std::string &path, std::int64_t length) {
        _flushLog();
        ASSERT_EQ(::truncate(path.c_str(), length), 0);
    }
    void passSeconds(int seconds) { platform.clock.set(platform.clock.now() + std::chrono::seconds(seconds)); }
    static void logLines(int count) {
        for (int i = 0; i < count; ++i) {
            logNormal("line");
        }
    }
    /// Brings the countdown to its start, whatever earlier tests left of it.
    void startCountdown() {
        const std::string scratch = setUp();
        grow(scratch, kMaxLogFileLength + 1);
        passSeconds(1);
        while (getLogFilePath() == scratch) {
            logNormal("until the length is looked at");
        }
        passSeconds(1);
    }
    /// Begins with a file in that folder that is longer than it may be, so that the next look at it ends it.
    std::string setUpFullFile(const std::string &folder) {
        startCountdown();
        std::string file = setUpIn(folder);
        grow(file, kMaxLogFileLength + 1);
        passSeconds(5);
        return file;
    }
};

TEST_F(LogRotation, TheConstantsAreFiftyMebibytesAndFiveHundredLines) {
    EXPECT_EQ(kMaxLogFileLength, 52428800);
    EXPECT_EQ(kExamineLogFileLengthEveryNLines, 500);
}

TEST_F(LogRotation, TheLengthIsLookedAtWithEvery501stLine) {
    const std::string file = setUpFullFile(home.path());
    logLines(500);
    EXPECT_EQ(getLogFilePath(), file); // deliberate: the constant says 500, the count is 501
    logLines(1);
    EXPECT_EQ(getLogFilePath(), home.path("Q-2024-03-05-141509.log"));
    logLines(1);
    EXPECT_EQ(test::linesIn(contentsOf(*getLogFilePath())).size(), 1U);
}

TEST_F(LogRotation, AFileOfExactlyTheLimitStays) {
    startCountdown();
    const std::string file = setUp();
    logLines(500);
    _flushLog();
    const std::string line = test::linesIn(contentsOf(file)).at(0) + '\n';
    grow(file, kMaxLogFileLength - std::ssize(line));
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
    const std::string file = setUp();
    logLines(500);
    const std::string line = test::linesIn(contentsOf(file)).at(0) + '\n';
    grow(file, kMaxLogFileLength + 1 - std::ssize(line));
    passSeconds(5);
    logLines(1);
    EXPECT_NE(getLogFilePath(), file);
    EXPECT_EQ(std::filesystem::file_size(file), 52428801);
}

TEST_F(LogRotation, TheOldFileIsLeftAsItIs) {
    const std::string file = setUpFullFile(home.path());
    logLines(502);
    _flushLog();
    EXPECT_GT(std::filesystem::file_size(file), kMaxLogFileLength + 1);
    EXPECT_TRUE(std::filesystem::exists(file));
}

TEST_F(LogRotation, TwoRotationsWithinOneSecondGoOnInTheSameFile) {
    startCountdown();
    const std::string file = setUp();
    grow(file, kMaxLogFileLength + 1);
    logLines(501); // the clock stands still: the next file has the same name
    EXPECT_EQ(getLogFilePath(), file);
    logNormal("appended");
    _flushLog();
    EXPECT_GT(std::filesystem::file_size(file), kMaxLogFileLength + 1);
}

TEST_F(LogRotation, LengthsCountModulo4GiB) {
    startCountdown();
    const std::string file = setUp();
    grow(file, k4GiB + 1000); // deliberate: measured with 32 bits, this is a short file
    passSeconds(5);
    logLines(501);
    EXPECT_EQ(getLogFilePath(), file);
    grow(file, k4GiB + kMaxLogFileLength + 1);
    logLines(501);
    EXPECT_NE(getLogFilePath(), file);
}

TEST_F(LogRotation, APathThatCannotBeMadeLeavesTheOldFileOpenUntilTheNextLook) {
    const std::string file = setUpFullFile(home.makeFolder("x/logs"));
    std::filesystem::rename(home.path("x"), home.path("moved"));
    home.write("x", "a file in the way, so that the folder can't be made again");
    logLines(501);
    EXPECT_EQ(getLogFilePath(), file);
    logLines(500);
    EXPECT_TRUE(contentsOf(home.path("moved/logs/" + lastPathComponent(file))).ends_with("line\n"));
    ASSERT_TRUE(std::filesystem::remove(home.path("x")));
    logLines(1);
    EXPECT_NE(getLogFilePath(), file);
}

TEST_F(LogRotation, ANextFileThatCannotBeOpenedIsAConfigurationFaultAsAtSetUp) {
    setUpFullFile(home.makeFolder("logs"));
    const std::string next = home.makeFolder("logs/Q-2024-03-05-141509.log");
    EXPECT_THAT([] { logLines(501); }, testing::ThrowsMessage<Exception>(testing::HasSubstr(
                                           "(Failed to open log file \"" + next + "\" for writing)")));
    logNormal("lost, and not an error");
}

TEST_F(LogRotation, AFolderThatIsGoneIsMadeAgain) {
    startCountdown();
    const std::string folder = home.makeFolder("logs");
    const std::string file = initLogging3("verbose", "error", folder, "Q", "Q");
    grow(file, kMaxLogFileLength + 1);
    passSeconds(5);
    std::filesystem::rename(folder, home.path("moved"));
    logLines(502);
    EXPECT_TRUE(std::filesystem::exists(*getLogFilePath()));
    EXPECT_NE(getLogFilePath(), file);
    EXPECT_THAT(messagesOf(*getLogFilePath()), testing::Contains("line"));
}

TEST_F(LogRotation, TheLengthOfNoStreamIsAllOnes) { EXPECT_EQ(_fileLength(nullptr), 0xFFFFFFFFU); }

TEST_F(LogRotation, MeasuringALengthKeepsThePosition) {
    const std::string path = home.write("f", "0123456789");
    FILE *stream = std::fopen(path.c_str(), "r");
    ASSERT_NE(stream, nullptr);
    std::fseek(stream, 4, SEEK_SET);
    EXPECT_EQ(_fileLength(stream), 10U);
    EXPECT_EQ(std::ftell(stream), 4);
    std::fclose(stream);
}

} // namespace
} // namespace quillmark
