#include "platform/linux/windows/LinuxAlerts.h"

#include "fakes/FakeBundle.h"
#include "platform/linux/mainthread/RunLoop.h"
#include "platform/linux/windows/WindowModule.h"
#include "platform/process/Problem.h"
#include "support/TemporaryHome.h"

#include <gmock/gmock.h>

namespace quillmark::test {

namespace {

std::vector<std::string> problems;

/// A bundle without a window module.
class LinuxAlertsTest : public testing::Test {
protected:
    LinuxAlertsTest() {
        problems.clear();
        setProblemReporter([](const std::string &sentence) { problems.push_back(sentence); });
        bundle.bundlePath = home.path("Quillmark.app");
        alert.windowTitle = "Quillmark";
        alert.messageText = "Sicher?";
        alert.informativeText = "Das läßt sich\nnicht rückgängig machen.";
        alert.buttons = {"Ja", "Vielleicht", "Nein"};
    }
    ~LinuxAlertsTest() override { setProblemReporter(nullptr); }

    /// What one alert writes on standard error.
    std::string said() {
        testing::internal::CaptureStderr();
        answer = alerts.runModal(alert).button;
        return testing::internal::GetCapturedStderr();
    }

    TemporaryHome home;
    FakeBundle bundle;
    RunLoop runLoop;
    WindowModule module{bundle, runLoop};
    LinuxAlerts alerts{module};
    AlertDescription alert;
    int answer = -1;
};

} // namespace

TEST_F(LinuxAlertsTest, WithoutTheModuleTheTextsAreOneLineOnStandardError) {
    EXPECT_EQ(said(), "Quillmark: Sicher? Das läßt sich nicht rückgängig machen.\n");
}

TEST_F(LinuxAlertsTest, WithoutTheModuleAnAlertWithOneTextIsThatText) {
    alert.informativeText.clear();
    EXPECT_EQ(said(), "Quillmark: Sicher?\n");
}

TEST_F(LinuxAlertsTest, WithoutTheModuleTheLastButtonCountsAsPressed) {
    said();
    EXPECT_EQ(answer, 2);
}

TEST_F(LinuxAlertsTest, WithoutTheModuleTheOnlyButtonCountsAsPressed) {
    alert.buttons = {"Beenden"};
    said();
    EXPECT_EQ(answer, 0);
}

TEST_F(LinuxAlertsTest, WithoutTheModuleAnAlertThatNamesNoButtonIsAnsweredAllTheSame) {
    alert.buttons.clear();
    said();
    EXPECT_EQ(answer, 0);
}

TEST_F(LinuxAlertsTest, WithoutTheModuleTheProblemIsReportedWithTheMissingFile) {
    said();
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_THAT(problems[0], testing::StartsWith("The alert \"Sicher?\" could not be shown: "));
    EXPECT_THAT(problems[0], testing::HasSubstr(bundle.bundlePath + "/Contents/PlugIns/libquillmark-windows.so"));
}

TEST_F(LinuxAlertsTest, AModuleThatIsNoneIsReported) {
    home.write("Quillmark.app/Contents/PlugIns/libquillmark-windows.so", "no library");
    said();
    EXPECT_EQ(answer, 2);
    EXPECT_EQ(problems.size(), 1U);
}

TEST_F(LinuxAlertsTest, ATextThatLooksLikeAPlaceholderIsShownAsItIs) {
    alert.messageText = "%3 of %1";
    EXPECT_TRUE(said().starts_with("Quillmark: %3 of %1 Das"));
}

} // namespace quillmark::test
