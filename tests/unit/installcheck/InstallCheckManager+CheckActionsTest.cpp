#include "support/InstallCheckWindowFixture.h"
#include "utils/Exception.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace quillmark {
namespace {

using test::Lines;
using test::linesFrom;
using testing::HasSubstr;

using InstallCheckActions = test::InstallCheckWindow;

TEST_F(InstallCheckActions, ContinueShowsTheSheetAndRepairsOnAThreadOfItsOwn) {
    show({missing("QMTool", "a")});
    window.owner->installButtonClick();
    EXPECT_EQ(platform.transcript.calls(), Lines{"beginProgressSheet"});
    EXPECT_EQ(platform.mainThread.threadNames, Lines{"repair"});
}

TEST_F(InstallCheckActions, ASecondContinueStartsNoSecondRepairWhileOneRuns) {
    show({missing("QMTool", "a")});
    for (const int status : {0, 1}) { // a repair that comes back, and one that fails
        platform.tasks.usualStatus = status;
        platform.transcript.clear();
        window.owner->installButtonClick();
        window.owner->installButtonClick();
        EXPECT_EQ(calls(), Lines{"beginProgressSheet"}) << status;
        runRepairThread();
        window.owner->installButtonClick(); // the main thread has not heard of its end yet
        EXPECT_TRUE(platform.mainThread.threads.empty()) << status;
        EXPECT_EQ(platform.mainThread.pump(), 1);
    }
    EXPECT_EQ(platform.mainThread.threadNames, (Lines{"repair", "repair"}));
}

TEST_F(InstallCheckActions, ARepairThatHelpedStartsTheCore) {
    show({missing("Bundle", "a")});
    repair();
    EXPECT_TRUE(calls().empty()) << "the thread touches no window";
    installBundle("none", "1.14.4"); // which the repair was asked for
    EXPECT_THROW(platform.mainThread.pump(), test::Terminated);
    EXPECT_EQ(calls(), (Lines{"endProgressSheet", "orderOutProgressSheet", "launchCore"}));
}

TEST_F(InstallCheckActions, TheLauncherEndsAfterARepairEvenIfTheCoresLaunchDoesNotEndIt) {
    show({missing("Bundle", "a")});
    installBundle("none", "1.14.4");
    delegate.endsTheProcess = false;
    EXPECT_THROW(manager().bringWindowBackToFront(), test::Terminated);
    EXPECT_EQ(linesFrom(calls(), 2), (Lines{"launchCore", "terminate"}));
}

TEST_F(InstallCheckActions, WhatBreaksBetweenTheLastTwoLooksIsAnAlertAndTheLauncherStays) {
    platform.tasks.outputs[kAdministratorsTool] = "Limited 1.14.4.1303";
    show({missing("Bundle", "a"), itemOf("QMTool", "env", kAdministratorsTool)});
    const std::string folder = installBundle("none", "1.14.4");
    platform.tasks.onLaunch = [folder] { std::filesystem::remove_all(folder); }; // after the bundle was looked at
    manager().bringWindowBackToFront();
    Lines made = calls();
    std::erase_if(made, [](const std::string &call) { return call.starts_with("launch "); });
    EXPECT_EQ(linesFrom(made, 2), (Lines{"setFaults", "beginAlertSheet RunFailedTitle | 50% failed | OK"}));
    EXPECT_EQ(window.faults, Lines{"a is Missing"});
}

TEST_F(InstallCheckActions, ARepairThatDidNotHelpShowsTheWindowAgainWithWhatIsLeft) {
    show({missing("QMTool", "a")});
    repair();
    EXPECT_EQ(platform.mainThread.pump(), 1);
    EXPECT_EQ(calls(),
              (Lines{"endProgressSheet", "orderOutProgressSheet", "setText explanation", "setFaults", "bringToFront"}));
}

TEST_F(InstallCheckActions, ARepairThatFailedShowsAnAlertAndTheWindowStays) {
    show({missing("QMTool", "a")});
    platform.tasks.usualStatus = 1;
    for (int attempt = 0; attempt < 2; ++attempt) {
        repair();
        EXPECT_EQ(platform.mainThread.pump(), 1);
        EXPECT_EQ(calls(), (Lines{"endProgressSheet", "orderOutProgressSheet",
                                  "beginAlertSheet RepairFailedTitle | 50% failed | OK"}));
    }
}

TEST_F(InstallCheckActions, TheLogIsWholeOnTheDiskWhenTheWindowIsBack) {
    for (const int status : {0, 1}) { // a repair that did not help, and one that failed
        show({missing("QMTool", "a")});
        startLog(kLogLevelNormal);
        platform.tasks.usualStatus = status;
        window.owner->installButtonClick();
        runRepairThread();
        logNormal("the last line");
        EXPECT_EQ(platform.mainThread.pump(), 1);
        EXPECT_THAT(test::readAll(getLogFilePath().value()), HasSubstr("the last line")) << status;
    }
}

TEST_F(InstallCheckActions, AnExceptionInTheThreadIsAFailureAndALineInTheLog) {
    show({missing("QMToolRoot", "a")});
    startLog(kLogLevelError);
    window.owner->installButtonClick();
    platform.transcript.clear();
    platform.clock.onSleep = [] { throw Exception("Name", "reason"); };
    runRepairThread();
    EXPECT_EQ(log(), Lines{"ERR Name (reason)"});
    EXPECT_EQ(platform.mainThread.pump(), 1);
    EXPECT_TRUE(calls().back().starts_with("beginAlertSheet RepairFailedTitle"));
}

TEST_F(InstallCheckActions, WhatIsStillAtFaultWhenTheCoreIsToStartIsAnAlert) {
    show({missing("Bundle", "a")});
    manager().runQuillmark();
    EXPECT_EQ(calls(), (Lines{"setFaults", "beginAlertSheet RunFailedTitle | 50% failed | OK"}));
}

TEST_F(InstallCheckActions, WhatDoesNotCountKeepsNothingFromStarting) {
    setItems({});
    manager().setDelegate(&delegate);
    manager().updateStatus();
    EXPECT_THROW(manager().runQuillmark(), test::Terminated);
    EXPECT_EQ(calls(), Lines{"launchCore"});
}

TEST_F(InstallCheckActions, TheUserWhoDoesNotWantItIsLoggedAndTheProcessEndsAtOnce) {
    show({missing("QMTool", "a")});
    startLog(kLogLevelNormal);
    EXPECT_THROW(window.owner->dontInstallButtonClick(), test::Terminated);
    EXPECT_EQ(calls(), Lines{"exitAtOnce"});
    EXPECT_EQ(log(), Lines{"nrm User chose to quit"});
}

TEST_F(InstallCheckActions, ItsCloseBoxEndsTheProcessAtOnce) {
    show({missing("QMTool", "a")});
    EXPECT_THROW(window.owner->windowWillClose(), test::Terminated);
    EXPECT_EQ(calls(), Lines{"exitAtOnce"});
}

TEST_F(InstallCheckActions, DetailsShowTheFolderOfTheLog) {
    show({missing("QMTool", "a")});
    startLog();
    window.owner->detailsButtonClick();
    EXPECT_EQ(calls(), Lines{"openFolder " + home.path()});
}

TEST_F(InstallCheckActions, WithoutAWindowTheCoreIsStartedWhenAllIsInOrder) {
    setItems({});
    manager().setDelegate(&delegate);
    EXPECT_THROW(manager().bringWindowBackToFront(), test::Terminated);
    EXPECT_EQ(calls(), Lines{"launchCore"});
}

} // namespace
} // namespace quillmark
