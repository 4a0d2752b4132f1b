#include "tools/ProcessUtilities.h"
#include "support/LogFixture.h"
#include "tools/Applications.h"

namespace quillmark {
namespace {

const QString kFirst =
    QStringLiteral("ps ax -o comm | fgrep 'QuillmarkCore' | grep -v grep | grep -v relaunchqm > /dev/null");
const QString kSecond = QStringLiteral("ps ax -o comm | grep 'Quillmark Mac' | grep -v grep >/dev/null");
const QString kThird = QStringLiteral("ps ax -o comm | grep 'QuillmarkCore' | grep -v grep >/dev/null");

class ProcessDetection : public test::LogFixture {
protected:
    static bool isRunning() { return ProcessUtilities::quillmarkCoreAlreadyRunning(QStringLiteral("QuillmarkCore")); }
};

TEST_F(ProcessDetection, AllThreePipelinesAlwaysRunInOrder) {
    platform.tasks.statuses.insert(kFirst, 0);
    EXPECT_TRUE(isRunning());
    QStringList commands;
    for (const QString &pipeline : {kFirst, kSecond, kThird}) {
        commands << QStringLiteral("run /bin/sh -c ") + pipeline;
    }
    EXPECT_EQ(platform.transcript.calls(), commands);
}

TEST_F(ProcessDetection, ThePipelinesFindTheBundlesOwnProgramsFirst) {
    isRunning();
    EXPECT_EQ(platform.tasks.programFolders,
              QStringList(3, platform.bundle.path() + QStringLiteral("/Contents/Helpers")));
}

TEST_F(ProcessDetection, OneMatchIsEnough) {
    EXPECT_FALSE(isRunning());
    for (const QString &pipeline : {kFirst, kSecond, kThird}) {
        platform.tasks.statuses = {{pipeline, 0}};
        EXPECT_TRUE(isRunning()) << pipeline.toStdString();
    }
}

TEST_F(ProcessDetection, APipelineThatCannotRunFindsNothing) {
    platform.tasks.canStart = false;
    EXPECT_FALSE(isRunning());
}

TEST_F(ProcessDetection, TheNameIsPutBetweenSingleQuotesUnescaped) {
    ProcessUtilities::quillmarkCoreAlreadyRunning(QStringLiteral("a'b"));
    EXPECT_TRUE(platform.transcript.calls().first().contains(QStringLiteral("fgrep 'a'b' |"))); // deliberate
}

TEST_F(ProcessDetection, TheLanguageIsAlwaysEnglish) {
    EXPECT_EQ(ProcessUtilities::currentLanguage(), QStringLiteral("en"));
}

TEST_F(ProcessDetection, ITunesAndTheFinderAreFoundByTheirIdentifiers) {
    EXPECT_FALSE(ProcessUtilities::getRunningiTunesInfo());
    EXPECT_FALSE(ProcessUtilities::getRunningFinder());
    platform.workspace.addApplication(QStringLiteral("com.apple.itunes"), 1); // compared exactly
    platform.workspace.addApplication(QStringLiteral("com.apple.iTunes"), 2);
    platform.workspace.addApplication(QStringLiteral("com.apple.iTunes"), 3);
    platform.workspace.addApplication(QStringLiteral("com.apple.finder"), 4);
    EXPECT_EQ(ProcessUtilities::getRunningiTunesInfo()->value(kApplicationProcessIdentifier), QVariant(2));
    EXPECT_EQ(ProcessUtilities::getRunningFinder()->value(kApplicationProcessIdentifier), QVariant(4));
}

class ApplicationsTest : public test::LogFixture {
protected:
    const QString id = QStringLiteral("com.example.app");

    void run() { platform.workspace.addApplication(id, 7); }
    QList<int> sleptSeconds() const {
        QList<int> sleeps;
        for (const auto duration : platform.clock.sleeps()) {
            EXPECT_EQ(duration % std::chrono::seconds(1), std::chrono::microseconds(0));
            sleeps << static_cast<int>(duration / std::chrono::seconds(1));
        }
        return sleeps;
    }
    static void expectError(const std::optional<Error> &error, qint32 code, const char *reason,
                            const QString &description) {
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain, QStringLiteral("com.quillmark.Quillmark.Quillmark-Client"));
        EXPECT_EQ(error->code, code);
        EXPECT_EQ(error->failureReason(), QString::fromLatin1(reason));
        EXPECT_EQ(error->description(), description);
    }
};

TEST_F(ApplicationsTest, AnApplicationRunsWhenARecordHasItsIdentifierExactly) {
    EXPECT_FALSE(isApplicationRunning(id));
    platform.workspace.addApplication(QStringLiteral("com.example.App"), 1);
    EXPECT_FALSE(isApplicationRunning(id));
    run();
    EXPECT_TRUE(isApplicationRunning(id));
}

TEST_F(ApplicationsTest, AnAbsentIdentifierIsNotAnEmptyOne) {
    platform.workspace.applications.append(QVariantMap{{kApplicationProcessIdentifier, 7}});
    EXPECT_FALSE(isApplicationRunning(QString()));
    EXPECT_FALSE(isApplicationRunning(QStringLiteral("")));
}

TEST_F(ApplicationsTest, LaunchingGoesByTheBundlesPath) {
    platform.workspace.bundles.insert(id, QStringLiteral("/Applications/A.app"));
    EXPECT_FALSE(launchApplication(id));
    EXPECT_EQ(platform.transcript.calls(), QStringList({QStringLiteral("launchApplication /Applications/A.app")}));
}

TEST_F(ApplicationsTest, LaunchingAnUnknownIdentifierIsAnError) {
    expectError(launchApplication(id), -1, "launchApplication failed",
                QStringLiteral("bundleWithIdentifier \"com.example.app\" failed"));
}

TEST_F(ApplicationsTest, AFailedLaunchIsAnErrorThatNamesTheBundle) {
    platform.workspace.bundles.insert(id, QStringLiteral("/Applications/A.app"));
    platform.transcript.failAt(QStringLiteral("launchApplication"), 1);
    expectError(launchApplication(id), -1, "launchApplication failed",
                QStringLiteral("launchApplication \"/Applications/A.app\" failed"));
}

TEST_F(ApplicationsTest, WhatDoesNotRunIsNotAskedToQuit) {
    const QString file = logToFile(kLogLevelVerbose);
    EXPECT_FALSE(quitApplication(id, true, 4.0));
    EXPECT_EQ(platform.transcript.calls(), QStringList({QStringLiteral("launchedApplications")}));
    EXPECT_EQ(messagesOf(file),
              QStringList(
                  {QStringLiteral("Not requesting app with id \"com.example.app\" to quit because it isn't running")}));
}

TEST_F(ApplicationsTest, WithoutWaitingTheRequestIsAll) {
    const QString file = logToFile(kLogLevelVerbose);
    run();
    EXPECT_FALSE(quitApplication(id, false, 0));
    EXPECT_TRUE(platform.clock.sleeps().empty());
    EXPECT_EQ(messagesOf(file), QStringList({QStringLiteral("Requesting app with id \"com.example.app\" to quit..."),
                                             QStringLiteral("Requested app with id \"com.example.app\" to quit")}));
}

TEST_F(ApplicationsTest, ARequestThatCannotBeBuiltIsAnErrorInItsOwnWords) {
    const QString file = logToFile(kLogLevelVerbose);
    run();
    platform.appleEvents.buildStatus = -50;
    const QString text = QStringLiteral(
        "Request to quit app wth id \"com.example.app\" failed (AEBuildAppleEvent failed with error -50)");
    expectError(quitApplication(id, true, 4.0), -1, "quitApplication failed", text);
    EXPECT_EQ(messagesOf(file).last(), text);
    EXPECT_FALSE(platform.transcript.calls().contains(QStringLiteral("sendMessage")));
}

TEST_F(ApplicationsTest, ARequestThatCannotBeSentIsAnErrorInItsOwnWords) {
    const QString file = logToFile(kLogLevelVerbose);
    run();
    platform.appleEvents.sendStatus = -600;
    const QString text =
        QStringLiteral("Request to quit app wth id \"com.example.app\" failed (AESendMessage failed with error -600)");
    expectError(quitApplication(id, true, 4.0), -2, "quitApplication failed", text);
    EXPECT_EQ(messagesOf(file).last(), text);
}

TEST_F(ApplicationsTest, FourSecondsAreSixTurnsOfWhichTwoSleep) {
    run();
    const QString file = logToFile(kLogLevelVerbose);
    expectError(quitApplication(id, true, 4.0), -3, "quitApplication failed",
                QStringLiteral("Timed out waiting for app with id \"com.example.app\" to quit after 4s"));
    EXPECT_EQ(sleptSeconds(), QList<int>({0, 0, 0, 0, 1, 1})); // deliberate: the nominal intervals count
    EXPECT_EQ(messagesOf(file).count(QStringLiteral("Waiting for app with id \"com.example.app\" to quit")), 5);
}

TEST_F(ApplicationsTest, TheIntervalGrowsToTwoSecondsAndNoFurther) {
    run();
    quitApplication(id, true, 12.0);
    // 0.25 0.375 0.5625 0.84375 1.265625 1.8984375 2 2 2 2: their sum passes 12 with the tenth.
    EXPECT_EQ(sleptSeconds(), QList<int>({0, 0, 0, 0, 1, 1, 2, 2, 2, 2}));
}

TEST_F(ApplicationsTest, TheTimeIsOutWhenWhatHasElapsedIsAtLeastTheLimit) {
    run();
    quitApplication(id, true, 0.625); // 0.25 and 0.375, to the point
    EXPECT_EQ(sleptSeconds().size(), 2);
    quitApplication(id, true, 0.626);
    EXPECT_EQ(sleptSeconds().size(), 2 + 3);
    quitApplication(id, true, 0);
    EXPECT_EQ(sleptSeconds().size(), 2 + 3 + 1);
}

TEST_F(ApplicationsTest, TheTimeOutIsToldInWholeSeconds) {
    run();
    EXPECT_EQ(quitApplication(id, true, 0.9)->description(),
              QStringLiteral("Timed out waiting for app with id \"com.example.app\" to quit after 0s"));
}

TEST_F(ApplicationsTest, AnApplicationThatQuitsInTimeIsNoError) {
    const QString file = logToFile(kLogLevelVerbose);
    run();
    platform.appleEvents.onSend = [this] { platform.workspace.applications.clear(); };
    EXPECT_FALSE(quitApplication(id, true, 4.0));
    EXPECT_TRUE(platform.clock.sleeps().empty());
    EXPECT_EQ(messagesOf(file).last(), QStringLiteral("App with id \"com.example.app\" did quit"));
}

TEST_F(ApplicationsTest, ThePathsToApplicationsAreNone) { EXPECT_FALSE(pathsToApplication()); }

} // namespace
} // namespace quillmark
