#include "support/InstallCheckWindowFixture.h"

#include <gmock/gmock.h>

namespace quillmark {
namespace {

using test::InstallCheckWindow;
using test::Lines;
using test::linesFrom;
using test::Outlet;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

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

TEST_F(InstallCheckWindow, ATranslationOfTheFailureThatAsksForArgumentsIsShownAsItIs) {
    platform.bundle.strings["RepairFailed"] = "%s of %d failed: %@";
    show({missing("Bundle", "a")});
    startLog(kLogLevelError);
    manager().repairFailed();
    EXPECT_EQ(calls().back(), "beginAlertSheet RepairFailedTitle | %s of %d failed: %@ | OK");
    EXPECT_THAT(log(), testing::ElementsAre(HasSubstr("%s of %d failed: %@")));
}

} // namespace
} // namespace quillmark
