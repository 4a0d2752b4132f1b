#include "tools/ProcessUtilities.h"
#include "support/LogFixture.h"
#include "support/ValuePrinter.h"
#include "tools/LaunchedApplications.h"

#include <gmock/gmock.h>

namespace quillmark {
namespace {

using test::Lines;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

const std::string kFirst = "ps ax -o comm | fgrep 'QuillmarkCore' | grep -v grep | grep -v relaunchqm > /dev/null";
const std::string kSecond = "ps ax -o comm | grep 'Quillmark Mac' | grep -v grep >/dev/null";
const std::string kThird = "ps ax -o comm | grep 'QuillmarkCore' | grep -v grep >/dev/null";

class ProcessDetection : public test::LogFixture {
protected:
    static bool isRunning() { return ProcessUtilities::quillmarkCoreAlreadyRunning("QuillmarkCore"); }
};

TEST_F(ProcessDetection, AllThreePipelinesAlwaysRunInOrder) {
    platform.tasks.statuses[kFirst] = 0;
    EXPECT_TRUE(isRunning());
    Lines commands;
    for (const std::string &pipeline : {kFirst, kSecond, kThird}) {
        commands.push_back("run /bin/sh -c " + pipeline);
    }
    EXPECT_EQ(platform.transcript.calls(), commands);
}

TEST_F(ProcessDetection, ThePipelinesFindTheBundlesOwnProgramsFirst) {
    isRunning();
    EXPECT_EQ(platform.tasks.programFolders, Lines(3, platform.bundle.path() + "/Contents/Helpers"));
}

TEST_F(ProcessDetection, OneMatchIsEnough) {
    EXPECT_FALSE(isRunning());
    for (const std::string &pipeline : {kFirst, kSecond, kThird}) {
        platform.tasks.statuses = {{pipeline, 0}};
        EXPECT_TRUE(isRunning()) << pipeline;
    }
}

TEST_F(ProcessDetection, APipelineThatCannotRunFindsNothing) {
    platform.tasks.canStart = false;
    EXPECT_FALSE(isRunning());
}

TEST_F(ProcessDetection, TheNameIsPutBetweenSingleQuotesUnescaped) {
    ProcessUtilities::quillmarkCoreAlreadyRunning("a'b");
    EXPECT_THAT(platform.transcript.calls().front(), HasSubstr("fgrep 'a'b' |")); // deliberate
}

TEST_F(ProcessDetection, TheLanguageIsAlwaysEnglish) { EXPECT_EQ(ProcessUtilities::currentLanguage(), "en"); }

TEST_F(ProcessDetection, ITunesAndTheFinderAreFoundByTheirIdentifiers) {
    EXPECT_FALSE(ProcessUtilities::getRunningiTunesInfo());
    EXPECT_FALSE(ProcessUtilities::getRunningFinder());
    platform.workspace.addApplication("com.apple.itunes", 1); // compared exactly
    platform.workspace.addApplication("com.apple.iTunes", 2);
    platform.workspace.addApplication("com.apple.iTunes", 3);
    platform.workspace.addApplication("com.apple.finder", 4);
    EXPECT_EQ(valueOf(*ProcessUtilities::getRunningiTunesInfo(), kApplicationProcessIdentifier), Value(2));
    EXPECT_EQ(valueOf(*ProcessUtilities::getRunningFinder(), kApplicationProcessIdentifier), Value(4));
}

class ApplicationsTest : public test::LogFixture {
protected:
    const std::string id = "com.example.app";

    ApplicationsTest() { logToFile(kLogLevelVerbose); }
    Lines messages() const { return messagesOf(home.path("test.log")); }
    void run() { platform.workspace.addApplication(id, 7); }
    std::vector<int> sleptSeconds() const {
        std::vector<int> sleeps;
        for (const auto duration : platform.clock.sleeps()) {
            EXPECT_EQ(duration % std::chrono::seconds(1), std::chrono::microseconds(0));
            sleeps.push_back(static_cast<int>(duration / std::chrono::seconds(1)));
        }
        return sleeps;
    }
    static void expectError(const std::optional<Error> &error, std::int32_t code, const char *reason,
                            const std::string &description) {
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain, "com.quillmark.Quillmark.Quillmark-Client");
        EXPECT_EQ(error->code, code);
        EXPECT_EQ(error->failureReason(), reason);
        EXPECT_EQ(error->description(), description);
    }
};

TEST_F(ApplicationsTest, AnApplicationRunsWhenARecordHasItsIdentifierExactly) {
    EXPECT_FALSE(isApplicationRunning(id));
    platform.workspace.addApplication("com.example.App", 1);
    EXPECT_FALSE(isApplicationRunning(id));
    run();
    EXPECT_TRUE(isApplicationRunning(id));
}

TEST_F(ApplicationsTest, AnAbsentIdentifierIsNotAnEmptyOne) {
    platform.workspace.applications.push_back({{kApplicationProcessIdentifier, 7}});
    EXPECT_FALSE(isApplicationRunning(""));
}

TEST_F(ApplicationsTest, LaunchingGoesByTheBundlesPath) {
    platform.workspace.bundles[id] = "/Applications/A.app";
    EXPECT_FALSE(launchApplication(id));
    EXPECT_EQ(platform.transcript.calls(), Lines{"launchApplication /Applications/A.app"});
}

TEST_F(ApplicationsTest, LaunchingAnUnknownIdentifierIsAnError) {
    expectError(launchApplication(id), -1, "launchApplication failed",
                "bundleWithIdentifier \"com.example.app\" failed");
}

TEST_F(ApplicationsTest, AFailedLaunchIsAnErrorThatNamesTheBundle) {
    platform.workspace.bundles[id] = "/Applications/A.app";
    platform.transcript.failAt("launchApplication", 1);
    expectError(launchApplication(id), -1, "launchApplication failed",
                "launchApplication \"/Applications/A.app\" failed");
}

TEST_F(ApplicationsTest, WhatDoesNotRunIsNotAskedToQuit) {
    EXPECT_FALSE(quitApplication(id, true, 4.0));
    EXPECT_EQ(platform.transcript.calls(), Lines{"launchedApplications"});
    EXPECT_EQ(messages(), Lines{"Not requesting app with id \"com.example.app\" to quit because it isn't running"});
}

TEST_F(ApplicationsTest, WithoutWaitingTheRequestIsAll) {
    run();
    EXPECT_FALSE(quitApplication(id, false, 0));
    EXPECT_TRUE(platform.clock.sleeps().empty());
    EXPECT_EQ(messages(), (Lines{"Requesting app with id \"com.example.app\" to quit...",
                                 "Requested app with id \"com.example.app\" to quit"}));
}

TEST_F(ApplicationsTest, ARequestThatCannotBeBuiltIsAnErrorInItsOwnWords) {
    run();
    platform.appleEvents.buildStatus = -50;
    const std::string text =
        "Request to quit app wth id \"com.example.app\" failed (AEBuildAppleEvent failed with error -50)";
    expectError(quitApplication(id, true, 4.0), -1, "quitApplication failed", text);
    EXPECT_EQ(messages().back(), text);
    EXPECT_THAT(platform.transcript.calls(), Not(Contains("sendMessage")));
}

TEST_F(ApplicationsTest, ARequestThatCannotBeSentIsAnErrorInItsOwnWords) {
    run();
    platform.appleEvents.sendStatus = -600;
    const std::string text =
        "Request to quit app wth id \"com.example.app\" failed (AESendMessage failed with error -600)";
    expectError(quitApplication(id, true, 4.0), -2, "quitApplication failed", text);
    EXPECT_EQ(messages().back(), text);
}

TEST_F(ApplicationsTest, FourSecondsAreSixTurnsOfWhichTwoSleep) {
    run();
    expectError(quitApplication(id, true, 4.0), -3, "quitApplication failed",
                "Timed out waiting for app with id \"com.example.app\" to quit after 4s");
    EXPECT_EQ(sleptSeconds(), std::vector<int>({0, 0, 0, 0, 1, 1})); // deliberate: the nominal intervals count
    EXPECT_THAT(messages(), Contains("Waiting for app with id \"com.example.app\" to quit").Times(5));
}

TEST_F(ApplicationsTest, TheIntervalGrowsToTwoSecondsAndNoFurther) {
    run();
    quitApplication(id, true, 12.0);
    // 0.25 0.375 0.5625 0.84375 1.265625 1.8984375 2 2 2 2: their sum passes 12 with the tenth.
    EXPECT_EQ(sleptSeconds(), std::vector<int>({0, 0, 0, 0, 1, 1, 2, 2, 2, 2}));
}

TEST_F(ApplicationsTest, TheTimeIsOutWhenWhatHasElapsedIsAtLeastTheLimit) {
    run();
    quitApplication(id, true, 0.625); // 0.25 and 0.375, to the point
    EXPECT_EQ(sleptSeconds().size(), 2U);
    quitApplication(id, true, 0.626);
    EXPECT_EQ(sleptSeconds().size(), 2 + 3);
    quitApplication(id, true, 0);
    EXPECT_EQ(sleptSeconds().size(), 2 + 3 + 1);
}

TEST_F(ApplicationsTest, TheTimeOutIsToldInWholeSeconds) {
    run();
    EXPECT_EQ(quitApplication(id, true, 0.9)->description(),
              "Timed out waiting for app with id \"com.example.app\" to quit after 0s");
}

TEST_F(ApplicationsTest, AnApplicationThatQuitsInTimeIsNoError) {
    run();
    platform.appleEvents.onSend = [this] { platform.workspace.applications.clear(); };
    EXPECT_FALSE(quitApplication(id, true, 4.0));
    EXPECT_TRUE(platform.clock.sleeps().empty());
    EXPECT_EQ(messages().back(), "App with id \"com.example.app\" did quit");
}

TEST_F(ApplicationsTest, ThePathsToApplicationsAreNone) { EXPECT_FALSE(pathsToApplication()); }

} // namespace
} // namespace quillmark
