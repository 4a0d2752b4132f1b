#include "platform/linux/LinuxAlerts.h"

#include "fakes/FakeBundle.h"
#include "platform/Problem.h"
#include "platform/linux/RunLoop.h"
#include "platform/linux/WindowModule.h"
#include "support/QtPrinters.h"
#include "support/TemporaryHome.h"

#include <gtest/gtest.h>

namespace quillmark::test {

namespace {

QStringList problems;

/// A bundle without a window module.
class LinuxAlertsTest : public testing::Test {
protected:
    LinuxAlertsTest() {
        problems.clear();
        setProblemReporter([](const std::string &sentence) { problems << qtText(sentence); });
        bundle.bundlePath = home.path(QStringLiteral("Quillmark.app"));
        alert.windowTitle = QStringLiteral("Quillmark");
        alert.messageText = QStringLiteral("Sicher?");
        alert.informativeText = QStringLiteral("Das läßt sich\nnicht rückgängig machen.");
        alert.buttons = {QStringLiteral("Ja"), QStringLiteral("Vielleicht"), QStringLiteral("Nein")};
    }
    ~LinuxAlertsTest() override { setProblemReporter(nullptr); }

    /// What one alert writes on standard error.
    QString said() {
        testing::internal::CaptureStderr();
        answer = alerts.runModal(alert).button;
        return QString::fromStdString(testing::internal::GetCapturedStderr());
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
    EXPECT_EQ(said(), QStringLiteral("Quillmark: Sicher? Das läßt sich nicht rückgängig machen.\n"));
}

TEST_F(LinuxAlertsTest, WithoutTheModuleAnAlertWithOneTextIsThatText) {
    alert.informativeText.clear();
    EXPECT_EQ(said(), QStringLiteral("Quillmark: Sicher?\n"));
}

TEST_F(LinuxAlertsTest, WithoutTheModuleTheLastButtonCountsAsPressed) {
    said();
    EXPECT_EQ(answer, 2);
}

TEST_F(LinuxAlertsTest, WithoutTheModuleTheOnlyButtonCountsAsPressed) {
    alert.buttons = {QStringLiteral("Beenden")};
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
    ASSERT_EQ(problems.size(), 1);
    EXPECT_TRUE(problems[0].startsWith(QStringLiteral("The alert \"Sicher?\" could not be shown: ")))
        << qPrintable(problems[0]);
    EXPECT_TRUE(problems[0].contains(bundle.bundlePath + QStringLiteral("/Contents/PlugIns/libquillmark-windows.so")))
        << qPrintable(problems[0]);
}

TEST_F(LinuxAlertsTest, AModuleThatIsNoneIsReported) {
    home.write(QStringLiteral("Quillmark.app/Contents/PlugIns/libquillmark-windows.so"), "no library");
    said();
    EXPECT_EQ(answer, 2);
    EXPECT_EQ(problems.size(), 1);
}

TEST_F(LinuxAlertsTest, ATextThatLooksLikeAPlaceholderIsShownAsItIs) {
    alert.messageText = QStringLiteral("%3 of %1");
    EXPECT_TRUE(said().startsWith(QStringLiteral("Quillmark: %3 of %1 Das")));
}

} // namespace quillmark::test
