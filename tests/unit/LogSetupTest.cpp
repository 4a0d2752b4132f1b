#include "support/LogFixture.h"
#include "utils/Exception.h"

#include <QFileInfo>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {
namespace {

class LogSetup : public test::LogFixture {
protected:
    const QString normal = QStringLiteral("normal");
    const QString product = QStringLiteral("Quillmark");

    template <class Action>
    static void expectFault(Action action, const char *name, const QString &reason) {
        try {
            action();
            FAIL() << "nothing was raised";
        } catch (const Exception &exception) {
            EXPECT_EQ(exception.name(), QString::fromLatin1(name));
            EXPECT_EQ(exception.reason(), reason);
        }
    }
};

TEST_F(LogSetup, TheFileIsNamedByProductAndLocalTimeInTheFamilysFolder) {
    const QString path = initLogging3(normal, QStringLiteral("error"), QString(), QStringLiteral("Family"), product);
    EXPECT_EQ(path, home.path(QStringLiteral("Library/Logs/Family/Quillmark/Quillmark-2024-03-05-141502.log")));
    EXPECT_EQ(getLogFilePath(), path);
    EXPECT_TRUE(QFile::exists(path));
}

TEST_F(LogSetup, AGivenFolderHasItsTildeExpanded) {
    const QString path = initLogging3(normal, normal, QStringLiteral("~/logs"), product, product);
    EXPECT_EQ(path, home.path(QStringLiteral("logs/Quillmark-2024-03-05-141502.log")));
}

TEST_F(LogSetup, TheFolderIsCreatedForEverybodyLessTheUsersMask) {
    const mode_t mask = ::umask(0);
    const QString path = initLogging3(normal, normal, home.path(QStringLiteral("a/b")), product, product);
    ::umask(mask);
    struct stat attributes {};
    for (const char *folder : {"a", "a/b"}) {
        ASSERT_EQ(::stat(QFile::encodeName(home.path(QString::fromLatin1(folder))).constData(), &attributes), 0);
        EXPECT_EQ(attributes.st_mode & 07777U, 0777U);
    }
}

TEST_F(LogSetup, LevelsAreReadByTheirNames) {
    const struct {
        const char *name;
        LoggingLevel level;
    } names[] = {{"error", 0}, {"normal", 1}, {"verbose", 2}, {"detailed", 3}};
    for (const auto &[name, level] : names) {
        testing::internal::CaptureStdout();
        initLogging2(QString::fromLatin1(name), QStringLiteral("error"), QString());
        EXPECT_EQ(_fileLoggingLevel, level);
        EXPECT_EQ(_stdioLoggingLevel, 0U);
        initLogging2(QStringLiteral("error"), QString::fromLatin1(name), QString());
        EXPECT_EQ(_stdioLoggingLevel, level);
        testing::internal::GetCapturedStdout();
    }
}

TEST_F(LogSetup, LevelNamesAreCaseSensitive) {
    expectFault([&] { initLogging2(QStringLiteral("Verbose"), normal, QString()); }, "Configuration Fault",
                QStringLiteral("Invalid file logging level \"Verbose\""));
    expectFault([&] { initLogging2(normal, QStringLiteral("verbose "), QString()); }, "Configuration Fault",
                QStringLiteral("Invalid stdout logging level \"verbose \""));
}

TEST_F(LogSetup, TheFileLevelIsCheckedFirst) {
    expectFault([] { initLogging2(QStringLiteral("x"), QStringLiteral("y"), QString()); }, "Configuration Fault",
                QStringLiteral("Invalid file logging level \"x\""));
}

TEST_F(LogSetup, NothingChangesWhenALevelIsInvalid) {
    const QString file = logToFile(kLogLevelVerbose, kLogLevelError);
    EXPECT_THROW(initLogging2(QStringLiteral("detailed"), QStringLiteral("y"), home.path(QStringLiteral("other.log"))),
                 Exception);
    EXPECT_EQ(_fileLoggingLevel, kLogLevelVerbose);
    EXPECT_EQ(_stdioLoggingLevel, kLogLevelError);
    EXPECT_EQ(getLogFilePath(), file);
}

TEST_F(LogSetup, TheLevelsAreLoggedBeforeTheFileIsOpened) {
    testing::internal::CaptureStdout();
    const QString file = initLogging(kLogLevelVerbose, kLogLevelDetailed, home.path(QStringLiteral("x.log")));
    const std::string output = testing::internal::GetCapturedStdout();
    const size_t first = output.find("(vrb) ");
    EXPECT_NE(output.find("Logging (file) level 2\n", first), std::string::npos);
    EXPECT_NE(output.find("Logging (stdout) level 3\n"), std::string::npos);
    EXPECT_LT(output.find("Logging (file)"), output.find("Logging (stdout)"));
    EXPECT_EQ(contentsOf(file), "");
}

TEST_F(LogSetup, ASecondSetUpLogsTheLevelsToTheOldFile) {
    const QString first = initLogging(kLogLevelVerbose, kLogLevelError, home.path(QStringLiteral("1.log")));
    const QString second = initLogging(kLogLevelVerbose, kLogLevelError, home.path(QStringLiteral("2.log")));
    logNormal("new");
    EXPECT_EQ(messagesOf(first),
              QStringList({QStringLiteral("Logging (file) level 2"), QStringLiteral("Logging (stdout) level 0")}));
    EXPECT_EQ(messagesOf(second), QStringList({QStringLiteral("new")}));
}

TEST_F(LogSetup, AnExistingFileIsAppendedTo) {
    const QString file = home.write(QStringLiteral("x.log"), "before\n");
    initLogging(kLogLevelNormal, kLogLevelError, file);
    logNormal("after");
    EXPECT_TRUE(contentsOf(file).startsWith("before\n2024"));
}

TEST_F(LogSetup, ANullPathClosesTheFile) {
    const QString file = logToFile(kLogLevelNormal);
    EXPECT_TRUE(_initLogging(QString()).isNull());
    EXPECT_TRUE(getLogFilePath().isNull());
    logNormal("lost");
    EXPECT_EQ(contentsOf(file), "");
}

TEST_F(LogSetup, AFileThatCannotBeOpenedIsAConfigurationFaultAndItsPathIsRecorded) {
    const QString before = logToFile(kLogLevelNormal);
    const QString folder = home.makeFolder(QStringLiteral("folder.log"));
    expectFault([&] { _initLogging(folder); }, "Configuration Fault",
                QStringLiteral("Failed to open log file \"%1\" for writing").arg(folder));
    EXPECT_EQ(getLogFilePath(), folder);
    logNormal("lost");
    EXPECT_EQ(contentsOf(before), "");
}

TEST_F(LogSetup, ALinkInTheFilesPlaceIsNotFollowedAndAPipeNotWaitedFor) {
    const QString precious = home.write(QStringLiteral("letter"), "kept");
    const QString place = home.path(QStringLiteral("x.log"));
    const auto reason = QStringLiteral("Failed to open log file \"%1\" for writing").arg(place);
    for (const auto &target : {precious, home.path(QStringLiteral("nowhere"))}) {
        ASSERT_TRUE(QFile::link(target, place));
        expectFault([&] { _initLogging(place); }, "Configuration Fault", reason);
        ASSERT_TRUE(QFile::remove(place));
    }
    EXPECT_EQ(test::readAll(precious), "kept");
    EXPECT_FALSE(QFile::exists(home.path(QStringLiteral("nowhere"))));
    ASSERT_EQ(::mkfifo(QFile::encodeName(place).constData(), 0600), 0);
    expectFault([&] { _initLogging(place); }, "Configuration Fault", reason);
    const int reader = ::open(QFile::encodeName(place).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    expectFault([&] { _initLogging(place); }, "Configuration Fault", reason); // somebody waits for its lines
    ::close(reader);
    expectFault([] { _initLogging(QStringLiteral("/dev/null")); }, "Configuration Fault",
                QStringLiteral("Failed to open log file \"/dev/null\" for writing"));
}

TEST_F(LogSetup, LoggingGoesOnAfterAFailureOnceAFileOpens) {
    EXPECT_THROW(_initLogging(home.makeFolder(QStringLiteral("folder.log"))), Exception);
    const QString file = logToFile(kLogLevelNormal);
    logNormal("again");
    EXPECT_EQ(messagesOf(file), QStringList({QStringLiteral("again")}));
}

TEST_F(LogSetup, AFolderThatCannotBeCreatedIsAGenericExceptionThatNamesIt) {
    home.write(QStringLiteral("file"), "");
    platform.systemInfo.errorTexts.insert_or_assign(ENOTDIR, "Not a directory");
    const QString folder = home.path(QStringLiteral("file/logs"));
    expectFault([&] { initLogging3(normal, normal, folder, product, product); }, "NSGenericException",
                QStringLiteral("Failed to create \"%1\" (Not a directory)").arg(folder));
}

TEST_F(LogSetup, TheProcessIsRecordedAtEachInitialisation) {
    platform.systemInfo.name = "Other";
    platform.systemInfo.identifier = 7;
    const QString file = logToFile(kLogLevelNormal);
    logNormal("x");
    EXPECT_TRUE(contentsOf(file).contains(" Other[7] "));
}

TEST_F(LogSetup, TheTimeStampSwitchIsIgnored) {
    const QString file = logToFile(kLogLevelNormal);
    setLoggingHasDateTimeStamp(false);
    logNormal("x");
    EXPECT_TRUE(contentsOf(file).startsWith("2024-03-05 "));
}

using LogSetupDeathTest = LogSetup;

TEST_F(LogSetupDeathTest, EachArgumentMustBePresentAndNotEmptyInThisOrder) {
    const QString none;
    const QString empty = QStringLiteral("");
    const struct {
        QString file, out, family, name;
        const char *expression;
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
    const QString none;
    const QString empty = QStringLiteral("");
    EXPECT_EXIT(initLogging2(none, normal, none), testing::KilledBySignal(SIGABRT), "ERROR: fileLevelStr \\(");
    EXPECT_EXIT(initLogging2(empty, normal, none), testing::KilledBySignal(SIGABRT),
                "ERROR: \\[fileLevelStr length\\]");
    EXPECT_EXIT(initLogging2(normal, none, none), testing::KilledBySignal(SIGABRT), "ERROR: stdoutLevelStr \\(");
    EXPECT_EXIT(initLogging2(normal, empty, none), testing::KilledBySignal(SIGABRT),
                "ERROR: \\[stdoutLevelStr length\\]");
}

} // namespace
} // namespace quillmark
