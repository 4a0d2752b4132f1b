#include "support/FileFacts.h"
#include "support/LogFixture.h"
#include "support/ProcessSettings.h"
#include "utils/Exception.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <unistd.h>

namespace quillmark {
namespace {

using test::Lines;

class LogSetup : public test::LogFixture {
protected:
    const std::string normal = "normal";
    const std::string product = "Quillmark";

    template <class Action>
    static void expectFault(Action action, const std::string &reason) {
        EXPECT_THAT(action, testing::ThrowsMessage<Exception>("Configuration Fault (" + reason + ')'));
    }
};

TEST_F(LogSetup, TheFileIsNamedByProductAndLocalTimeInTheFamilysFolder) {
    const std::string path = initLogging3(normal, "error", std::nullopt, "Family", product);
    EXPECT_EQ(path, home.path("Library/Logs/Family/Quillmark/Quillmark-2024-03-05-141502.log"));
    EXPECT_EQ(getLogFilePath(), path);
    EXPECT_TRUE(std::filesystem::exists(path));
}

TEST_F(LogSetup, AGivenFolderHasItsTildeExpanded) {
    const std::string path = initLogging3(normal, normal, "~/logs", product, product);
    EXPECT_EQ(path, home.path("logs/Quillmark-2024-03-05-141502.log"));
}

TEST_F(LogSetup, TheFolderIsCreatedForEverybodyLessTheUsersMask) {
    const test::Mask mask(0);
    initLogging3(normal, normal, home.path("a/b"), product, product);
    for (const char *folder : {"a", "a/b"}) {
        EXPECT_EQ(test::permissionsOf(home.path(folder)), 0777U);
    }
}

TEST_F(LogSetup, LevelsAreReadByTheirNames) {
    const struct {
        const char *name;
        LoggingLevel level;
    } names[] = {{"error", 0}, {"normal", 1}, {"verbose", 2}, {"detailed", 3}};
    for (const auto &[name, level] : names) {
        testing::internal::CaptureStdout();
        initLogging2(name, "error", std::nullopt);
        EXPECT_EQ(_fileLoggingLevel, level);
        EXPECT_EQ(_stdioLoggingLevel, 0U);
        initLogging2("error", name, std::nullopt);
        EXPECT_EQ(_stdioLoggingLevel, level);
        testing::internal::GetCapturedStdout();
    }
}

TEST_F(LogSetup, LevelNamesAreCaseSensitive) {
    expectFault([&] { initLogging2("Verbose", normal, std::nullopt); }, "Invalid file logging level \"Verbose\"");
    expectFault([&] { initLogging2(normal, "verbose ", std::nullopt); }, "Invalid stdout logging level \"verbose \"");
}

TEST_F(LogSetup, TheFileLevelIsCheckedFirst) {
    expectFault([] { initLogging2("x", "y", std::nullopt); }, "Invalid file logging level \"x\"");
}

TEST_F(LogSetup, NothingChangesWhenALevelIsInvalid) {
    const std::string file = logToFile(kLogLevelVerbose, kLogLevelError);
    EXPECT_THROW(initLogging2("detailed", "y", home.path("other.log")), Exception);
    EXPECT_EQ(_fileLoggingLevel, kLogLevelVerbose);
    EXPECT_EQ(_stdioLoggingLevel, kLogLevelError);
    EXPECT_EQ(getLogFilePath(), file);
}

TEST_F(LogSetup, TheLevelsAreLoggedBeforeTheFileIsOpened) {
    testing::internal::CaptureStdout();
    const std::string file = *initLogging(kLogLevelVerbose, kLogLevelDetailed, home.path("x.log"));
    const std::string output = testing::internal::GetCapturedStdout();
    const size_t first = output.find("(vrb) ");
    EXPECT_NE(output.find("Logging (file) level 2\n", first), std::string::npos);
    EXPECT_NE(output.find("Logging (stdout) level 3\n"), std::string::npos);
    EXPECT_LT(output.find("Logging (file)"), output.find("Logging (stdout)"));
    EXPECT_EQ(contentsOf(file), "");
}

TEST_F(LogSetup, ASecondSetUpLogsTheLevelsToTheOldFile) {
    const std::string first = *initLogging(kLogLevelVerbose, kLogLevelError, home.path("1.log"));
    const std::string second = *initLogging(kLogLevelVerbose, kLogLevelError, home.path("2.log"));
    logNormal("new");
    EXPECT_EQ(messagesOf(first), (Lines{"Logging (file) level 2", "Logging (stdout) level 0"}));
    EXPECT_EQ(messagesOf(second), Lines{"new"});
}

TEST_F(LogSetup, AnExistingFileIsAppendedTo) {
    const std::string file = home.write("x.log", "before\n");
    initLogging(kLogLevelNormal, kLogLevelError, file);
    logNormal("after");
    EXPECT_TRUE(contentsOf(file).starts_with("before\n2024"));
}

TEST_F(LogSetup, ANullPathClosesTheFile) {
    const std::string file = logToFile(kLogLevelNormal);
    EXPECT_EQ(_initLogging(std::nullopt), std::nullopt);
    EXPECT_EQ(getLogFilePath(), std::nullopt);
    logNormal("lost");
    EXPECT_EQ(contentsOf(file), "");
}

TEST_F(LogSetup, AFileThatCannotBeOpenedIsAConfigurationFaultAndItsPathIsRecorded) {
    const std::string before = logToFile(kLogLevelNormal);
    const std::string folder = home.makeFolder("folder.log");
    expectFault([&] { _initLogging(folder); }, "Failed to open log file \"" + folder + "\" for writing");
    EXPECT_EQ(getLogFilePath(), folder);
    logNormal("lost");
    EXPECT_EQ(contentsOf(before), "");
}

TEST_F(LogSetup, ALinkInTheFilesPlaceIsNotFollowedAndAPipeNotWaitedFor) {
    const std::string precious = home.write("letter", "kept");
    const std::string place = home.path("x.log");
    const auto reason = "Failed to open log file \"" + place + "\" for writing";
    for (const auto &target : {precious, home.path("nowhere")}) {
        std::filesystem::create_symlink(target, place);
        expectFault([&] { _initLogging(place); }, reason);
        ASSERT_TRUE(std::filesystem::remove(place));
    }
    EXPECT_EQ(test::readAll(precious), "kept");
    EXPECT_FALSE(std::filesystem::exists(home.path("nowhere")));
    ASSERT_EQ(::mkfifo(place.c_str(), 0600), 0);
    expectFault([&] { _initLogging(place); }, reason);
    const int reader = ::open(place.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    expectFault([&] { _initLogging(place); }, reason); // somebody waits for its lines
    ::close(reader);
    expectFault([] { _initLogging("/dev/null"); }, "Failed to open log file \"/dev/null\" for writing");
}

TEST_F(LogSetup, LoggingGoesOnAfterAFailureOnceAFileOpens) {
    EXPECT_THROW(_initLogging(home.makeFolder("folder.log")), Exception);
    const std::string file = logToFile(kLogLevelNormal);
    logNormal("again");
    EXPECT_EQ(messagesOf(file), Lines{"again"});
}

TEST_F(LogSetup, AFolderThatCannotBeCreatedIsAGenericExceptionThatNamesIt) {
    home.write("file", "");
    platform.systemInfo.errorTexts.insert_or_assign(ENOTDIR, "Not a directory");
    const std::string folder = home.path("file/logs");
    EXPECT_THAT([&] { initLogging3(normal, normal, folder, product, product); },
                testing::ThrowsMessage<Exception>("NSGenericException (Failed to create \"" + folder +
                                                  "\" (Not a directory))"));
}

TEST_F(LogSetup, TheProcessIsRecordedAtEachInitialisation) {
    platform.systemInfo.name = "Other";
    platform.systemInfo.identifier = 7;
    const std::string file = logToFile(kLogLevelNormal);
    logNormal("x");
    EXPECT_THAT(contentsOf(file), testing::HasSubstr(" Other[7] "));
}

TEST_F(LogSetup, TheTimeStampSwitchIsIgnored) {
    const std::string file = logToFile(kLogLevelNormal);
    setLoggingHasDateTimeStamp(false);
    logNormal("x");
    EXPECT_TRUE(contentsOf(file).starts_with("2024-03-05 "));
}

using LogSetupDeathTest = LogSetup;

TEST_F(LogSetupDeathTest, EachArgumentMustBePresentAndNotEmptyInThisOrder) {
    const std::optional<std::string> none;
    const std::string empty;
    const struct {
        std::optional<std::string> file, out, family, name;
        const char *expression = nullptr;
    } cases[] = {
        {none, none, none, none, "\"?ASSERTION ERROR: fileLevel \\(file \"utils\", line [0-9]+\\)"},
        {empty, none, none, none, "ASSERTION ERROR: \\[fileLevel length\\] \\(file \"utils\""},
        {normal, none, none, none, "ASSERTION ERROR: stdoutLevel \\("},
        {normal, empty, none, none, "ASSERTION ERROR: \\[stdoutLevel length\\]"},
        {normal, normal, none, none, "ASSERTION ERROR: productFamilyName \\("},
        {normal, normal, empty, none, "ASSERTION ERROR: \\[productFamilyName length\\]"},
        {normal, normal, product, none, "ASSERTION ERROR: productName \\("},
        {normal, normal, product, empty, "ASSERTION ERROR: \\[productName length\\]"},
    };
    for (const auto &c : cases) {
        EXPECT_EXIT(initLogging3(c.file, c.out, home.path(), c.family, c.name), testing::KilledBySignal(SIGABRT),
                    c.expression);
    }
}

TEST_F(LogSetupDeathTest, TheLevelNamesMustBePresentAndNotEmpty) {
    const std::optional<std::string> none;
    const std::string empty;
    EXPECT_EXIT(initLogging2(none, normal, none), testing::KilledBySignal(SIGABRT), "ERROR: fileLevelStr \\(");
    EXPECT_EXIT(initLogging2(empty, normal, none), testing::KilledBySignal(SIGABRT),
                "ERROR: \\[fileLevelStr length\\]");
    EXPECT_EXIT(initLogging2(normal, none, none), testing::KilledBySignal(SIGABRT), "ERROR: stdoutLevelStr \\(");
    EXPECT_EXIT(initLogging2(normal, empty, none), testing::KilledBySignal(SIGABRT),
                "ERROR: \\[stdoutLevelStr length\\]");
}

} // namespace
} // namespace quillmark
