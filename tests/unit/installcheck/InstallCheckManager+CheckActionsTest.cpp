#include "platform/Application.h"
#include "support/InstallCheckFixture.h"
#include "utils/Exception.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <thread>

namespace quillmark {
namespace {

using Outlet = CheckWindowView::Outlet;
using test::Lines;
using test::linesFrom;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

/// Ends the launcher, as the real one does, when it is to start the core.
class FakeDelegate final : public ApplicationDelegate {
public:
    explicit FakeDelegate(test::Transcript &transcript) : m_transcript(transcript) {}
    std::int32_t brandId() const override { return 15; }
    bool endsTheProcess = true;
    void launchCore() override {
        m_transcript.record("launchCore");
        if (endsTheProcess) {
            throw test::Terminated();
        }
    }

private:
    test::Transcript &m_transcript;
};

/// A check window over a catalogue with items at fault. Its texts are its keys, but for those that are put together.
class InstallCheckWindow : public test::InstallCheckFixture {
protected:
    InstallCheckWindow() {
        platform.tasks.usualStatus = 0;
        platform.bundle.resources = {"InstallCheck.ui", "logo-1.bmp"};
        platform.bundle.strings.insert({{"QuillmarkLauncher_RepairInfo", "info;"},
                                        {"QuillmarkLauncher_Components", "components;"},
                                        {"QuillmarkLauncher_FileSystem", "file system;"},
                                        {"QuillmarkLauncher_Helpers", "helpers;"},
                                        {"RepairFailed", "50%% failed"}});
    }

    RequiredItem missing(const char *type, const char *name) const {
        return itemOf(type, name, home.path("none"), {{kInstaller, "x.pkg"}, {kVersion, "1.14.4"}});
    }
    /// Shows the window over those items.
    void show(const List &items) {
        setItems(items);
        manager().setDelegate(&delegate);
        EXPECT_FALSE(manager().checkForRequiredItems());
        platform.transcript.clear();
    }
    std::string explanationFor(const List &items) {
        show(items);
        return window.texts.at(Outlet::Explanation);
    }
    /// What was asked of the window and of the application, without what the repair asked for.
    Lines calls() const {
        Lines list = platform.transcript.calls();
        std::erase_if(list, [](const std::string &call) {
            return call.starts_with("run ") || call.starts_with("Authorization");
        });
        return list;
    }
    void runRepairThread() {
        ASSERT_EQ(platform.mainThread.threads.size(), 1U);
        std::exchange(platform.mainThread.threads, {}).front()();
    }

    /// What the thread does after a click of the button; the main one has not heard of its end yet.
    void repair() {
        window.owner->installButtonClick();
        platform.transcript.clear();
        runRepairThread();
    }

    test::FakeCheckWindow &window = platform.checkWindows.window;
    FakeDelegate delegate{platform.transcript};
};

TEST_F(InstallCheckWindow, IsNotLoadedWhenAllIsInOrder) {
    setItems({});
    EXPECT_TRUE(manager().checkForRequiredItems());
    EXPECT_FALSE(manager().hasWindow());
    EXPECT_TRUE(platform.transcript.calls().empty());
}

TEST_F(InstallCheckWindow, GetsItsTextsInOrderAndComesToTheFront) {
    platform.images.pictures[platform.bundle.resourcePath() + "/logo-1.bmp"] = Image{{}, 1, 1, "abcd"};
    setItems({missing("QMTool", "a")});
    EXPECT_FALSE(manager().checkForRequiredItems());
    EXPECT_EQ(calls(),
              (Lines{"load InstallCheck.ui", "setText header", "useWelcomeBranding", "setHeaderLogo logo-1.bmp",
                     "setText install", "setText don't install", "setText window", "setText progress",
                     "setText details", "setText list", "setText name column", "setText status column",
                     "makeInstallButtonDefault", "setText explanation", "setFaults", "bringToFront"}));
    EXPECT_EQ(window.texts.at(Outlet::Header), "Installing Quillmark");
    EXPECT_EQ(window.texts.at(Outlet::Window), "Quillmark");
    EXPECT_EQ(window.texts.at(Outlet::InstallButton), "Continue");
    EXPECT_EQ(window.texts.at(Outlet::DontInstallButton), "QuillmarkLauncher_DontInstall");
    EXPECT_EQ(window.texts.at(Outlet::Progress), "QuillmarkLauncher_Installing");
}

TEST_F(InstallCheckWindow, WithoutAnyLogoIsShownAllTheSameAndNothingIsSaid) {
    setItems({missing("QMTool", "a")});
    startLog(kLogLevelError);
    EXPECT_FALSE(manager().checkForRequiredItems());
    EXPECT_EQ(calls().back(), "bringToFront");
    EXPECT_EQ(log(), Lines());
}

TEST_F(InstallCheckWindow, IsLoadedOnce) {
    show({missing("QMTool", "a")});
    EXPECT_FALSE(manager().checkForRequiredItems());
    EXPECT_EQ(calls(), (Lines{"setText explanation", "setFaults", "bringToFront"}));
}

TEST_F(InstallCheckWindow, IsPreparedAndLoadedInAdvanceWhenAComponentIsMissing) {
    setItems({missing("QMTool", "a")});
    EXPECT_TRUE(manager().prepareWindow());
    manager().loadWindowInAdvance();
    EXPECT_TRUE(manager().hasWindow());
    EXPECT_EQ(linesFrom(calls(), 0, 2), (Lines{"prepare", "load InstallCheck.ui"}));
    EXPECT_THAT(calls(), Not(Contains("bringToFront")));

    platform.transcript.clear();
    EXPECT_FALSE(manager().checkForRequiredItems());
    EXPECT_EQ(calls(), (Lines{"setText explanation", "setFaults", "bringToFront"}));
}

TEST_F(InstallCheckWindow, IsNotPreparedWhenNoComponentIsMissing) {
    setItems({itemOf("QMTool", "a", installTool("tool", ""))}); // which has a wrong owner
    EXPECT_FALSE(manager().prepareWindow());
    EXPECT_TRUE(calls().empty());
}

TEST_F(InstallCheckWindow, ThatCannotBeShownIsTriedOnceAndBreaksNothing) {
    platform.checkWindows.canBeShown = false;
    setItems({missing("QMTool", "a")});
    EXPECT_FALSE(manager().checkForRequiredItems());
    EXPECT_FALSE(manager().checkForRequiredItems());
    EXPECT_FALSE(manager().hasWindow());
    EXPECT_EQ(calls(), Lines{"load InstallCheck.ui"});
}

TEST_F(InstallCheckWindow, ThatCannotBeShownLeavesEveryOperationWithoutEffectOnIt) {
    platform.checkWindows.canBeShown = false;
    show({missing("Bundle", "a")});
    manager().installButtonClick();
    manager().sheetDidEnd();
    manager().repairFailed();
    manager().runQuillmark();
    manager().bringWindowBackToFront();
    EXPECT_EQ(calls(), Lines());
    EXPECT_EQ(platform.mainThread.threadNames, Lines{"repair"});
}

TEST_F(InstallCheckWindow, WithoutAWindowTheCoreIsStartedWhenAllIsInOrder) {
    setItems({});
    manager().setDelegate(&delegate);
    EXPECT_THROW(manager().bringWindowBackToFront(), test::Terminated);
    EXPECT_EQ(calls(), Lines{"launchCore"});
}

TEST_F(InstallCheckWindow, ExplainsWhatKindOfComponentsAreAtFault) {
    EXPECT_EQ(explanationFor({missing("QMTool", "a")}), "info;components;helpers;\n");
    EXPECT_EQ(explanationFor({missing("Bundle", "QuillmarkFS")}), "info;components;file system;\n");
    EXPECT_EQ(explanationFor({missing("QMTool", "a"), missing("Bundle", "QuillmarkFS")}),
              "info;components;file system;helpers;\n");
    EXPECT_EQ(explanationFor({missing("Bundle", "another")}), "info;"); // deliberate: no line break
}

TEST_F(InstallCheckWindow, ListsEachComponentAtFaultWithItsStatus) {
    platform.bundle.strings["Missing"] = "Fehlt";
    show({missing("QMTool", "a"), itemOf("Unknown", "b", ""), missing("Bundle", "c")});
    EXPECT_EQ(window.faults, (Lines{"a is Fehlt", "c is Fehlt"}));
}

TEST_F(InstallCheckWindow, TheHeaderAsksForTheBrandsWhenItDraws) {
    show({missing("QMTool", "a")});
    ASSERT_TRUE(window.branding);
    EXPECT_EQ(window.branding->accountBrand(), -1);
    EXPECT_EQ(window.branding->configurationBrand(), 15);
    EXPECT_EQ(window.branding->title, "Quillmark");
    EXPECT_EQ(window.branding->resourceFolder, platform.bundle.resourcePath());
    manager().setDelegate(nullptr);
    EXPECT_EQ(window.branding->configurationBrand(), 0);
}

TEST_F(InstallCheckWindow, ContinueShowsTheSheetAndRepairsOnAThreadOfItsOwn) {
    show({missing("QMTool", "a")});
    window.owner->installButtonClick();
    EXPECT_EQ(platform.transcript.calls(), Lines{"beginProgressSheet"});
    EXPECT_EQ(platform.mainThread.threadNames, Lines{"repair"});
}

TEST_F(InstallCheckWindow, ASecondContinueStartsNoSecondRepairWhileOneRuns) {
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

TEST_F(InstallCheckWindow, ARepairThatHelpedStartsTheCore) {
    show({missing("Bundle", "a")});
    repair();
    EXPECT_TRUE(calls().empty()) << "the thread touches no window";
    installBundle("none", "1.14.4"); // which the repair was asked for
    EXPECT_THROW(platform.mainThread.pump(), test::Terminated);
    EXPECT_EQ(calls(), (Lines{"endProgressSheet", "orderOutProgressSheet", "launchCore"}));
}

TEST_F(InstallCheckWindow, TheLauncherEndsAfterARepairEvenIfTheCoresLaunchDoesNotEndIt) {
    show({missing("Bundle", "a")});
    installBundle("none", "1.14.4");
    delegate.endsTheProcess = false;
    EXPECT_THROW(manager().bringWindowBackToFront(), test::Terminated);
    EXPECT_EQ(linesFrom(calls(), 2), (Lines{"launchCore", "terminate"}));
}

TEST_F(InstallCheckWindow, WhatBreaksBetweenTheLastTwoLooksIsAnAlertAndTheLauncherStays) {
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

TEST_F(InstallCheckWindow, ARepairThatDidNotHelpShowsTheWindowAgainWithWhatIsLeft) {
    show({missing("QMTool", "a")});
    repair();
    EXPECT_EQ(platform.mainThread.pump(), 1);
    EXPECT_EQ(calls(),
              (Lines{"endProgressSheet", "orderOutProgressSheet", "setText explanation", "setFaults", "bringToFront"}));
}

TEST_F(InstallCheckWindow, ARepairThatFailedShowsAnAlertAndTheWindowStays) {
    show({missing("QMTool", "a")});
    platform.tasks.usualStatus = 1;
    for (int attempt = 0; attempt < 2; ++attempt) {
        repair();
        EXPECT_EQ(platform.mainThread.pump(), 1);
        EXPECT_EQ(calls(), (Lines{"endProgressSheet", "orderOutProgressSheet",
                                  "beginAlertSheet RepairFailedTitle | 50% failed | OK"}));
    }
}

TEST_F(InstallCheckWindow, TheLogIsWholeOnTheDiskWhenTheWindowIsBack) {
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

TEST_F(InstallCheckWindow, ATranslationOfTheFailureThatAsksForArgumentsIsShownAsItIs) {
    platform.bundle.strings["RepairFailed"] = "%s of %d failed: %@";
    show({missing("Bundle", "a")});
    startLog(kLogLevelError);
    manager().repairFailed();
    EXPECT_EQ(calls().back(), "beginAlertSheet RepairFailedTitle | %s of %d failed: %@ | OK");
    EXPECT_THAT(log(), testing::ElementsAre(HasSubstr("%s of %d failed: %@")));
}

TEST_F(InstallCheckWindow, AnExceptionInTheThreadIsAFailureAndALineInTheLog) {
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

TEST_F(InstallCheckWindow, WhatIsStillAtFaultWhenTheCoreIsToStartIsAnAlert) {
    show({missing("Bundle", "a")});
    manager().runQuillmark();
    EXPECT_EQ(calls(), (Lines{"setFaults", "beginAlertSheet RunFailedTitle | 50% failed | OK"}));
}

TEST_F(InstallCheckWindow, WhatDoesNotCountKeepsNothingFromStarting) {
    setItems({});
    manager().setDelegate(&delegate);
    manager().updateStatus();
    EXPECT_THROW(manager().runQuillmark(), test::Terminated);
    EXPECT_EQ(calls(), Lines{"launchCore"});
}

TEST_F(InstallCheckWindow, TheUserWhoDoesNotWantItIsLoggedAndTheProcessEndsAtOnce) {
    show({missing("QMTool", "a")});
    startLog(kLogLevelNormal);
    EXPECT_THROW(window.owner->dontInstallButtonClick(), test::Terminated);
    EXPECT_EQ(calls(), Lines{"exitAtOnce"});
    EXPECT_EQ(log(), Lines{"nrm User chose to quit"});
}

TEST_F(InstallCheckWindow, ItsCloseBoxEndsTheProcessAtOnce) {
    show({missing("QMTool", "a")});
    EXPECT_THROW(window.owner->windowWillClose(), test::Terminated);
    EXPECT_EQ(calls(), Lines{"exitAtOnce"});
}

TEST_F(InstallCheckWindow, DetailsShowTheFolderOfTheLog) {
    show({missing("QMTool", "a")});
    startLog();
    window.owner->detailsButtonClick();
    EXPECT_EQ(calls(), Lines{"openFolder " + home.path()});
}

} // namespace
} // namespace quillmark
