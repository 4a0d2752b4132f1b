#include "branding/LocalizedStrings.h"
#include "installcheck/InstallCheckManager.h"
#include "launcher/Quillmark_LauncherAppDelegate.h"
#include "support/LogFixture.h"
#include "tools/UpdateToolManager.h"
#include "utils/Exception.h"
#include "utils/Version.h"

namespace quillmark {
namespace {

class LauncherAppDelegate : public test::LogFixture {
protected:
    LauncherAppDelegate() {
        platform.bundle.bundlePath = home.path(QStringLiteral("Quillmark.app"));
        resource(QStringLiteral("Config.plist"), "config", {{QStringLiteral("Brand"), 15}});
        resource(QStringLiteral("Defaults.plist"), "defaults",
                 {{QStringLiteral("FileLogging"), QStringLiteral("normal")},
                  {QStringLiteral("StdioLogging"), QStringLiteral("error")}});
        resource(QStringLiteral("RequiredItems.plist"), "catalogue",
                 {{QStringLiteral("RequiredItems"), QVariantList()}});
        platform.bundle.resources << QStringLiteral("QuillmarkCore.app");
    }
    void resource(const QString &name, const QByteArray &document, const QVariantMap &values) {
        platform.bundle.resources << name;
        home.write(QStringLiteral("Quillmark.app/Contents/Resources/") + name, document);
        platform.propertyList.documents.insert(document, values);
    }
    /// Runs the start-up to the point where the process would end.
    void start() { EXPECT_THROW(delegate().applicationDidFinishLaunching(), test::Terminated); }
    Quillmark_LauncherAppDelegate &delegate() {
        if (!m_delegate) {
            m_strings.emplace(platform.bundle);
            m_delegate.emplace(platform.platform, *m_strings, [this]() -> InstallCheckManager & {
                if (!m_installCheck) {
                    m_installCheck.emplace(platform.platform, *m_strings, m_updateTool);
                }
                return *m_installCheck;
            });
        }
        return *m_delegate;
    }
    /// The questions to the process table.
    static QStringList pipelines() {
        const QString run = QStringLiteral("run /bin/sh -c ");
        return {run + kFirstPipeline,
                run + QStringLiteral("ps ax -o comm | grep 'Quillmark Mac' | grep -v grep >/dev/null"),
                run + QStringLiteral("ps ax -o comm | grep 'QuillmarkCore' | grep -v grep >/dev/null")};
    }
    static inline const QString kFirstPipeline =
        QStringLiteral("ps ax -o comm | fgrep 'QuillmarkCore' | grep -v grep | grep -v relaunchqm > /dev/null");
    QString core() const {
        return platform.bundle.resourcePath() + QStringLiteral("/QuillmarkCore.app/Contents/MacOS/QuillmarkCore");
    }

private:
    std::optional<LocalizedStrings> m_strings;
    UpdateToolManager m_updateTool{platform.platform};
    std::optional<InstallCheckManager> m_installCheck;
    std::optional<Quillmark_LauncherAppDelegate> m_delegate;
};

TEST_F(LauncherAppDelegate, TheStepsComeStrictlyInOrder) {
    start();
    EXPECT_EQ(platform.transcript.calls(),
              QStringList({QStringLiteral("registerDefaults FileLogging,StdioLogging"),
                           QStringLiteral("objectForKey FileLogging"), QStringLiteral("objectForKey StdioLogging"),
                           pipelines()[0], pipelines()[1], pipelines()[2], QStringLiteral("applicationsFolders user"),
                           QStringLiteral("applicationsFolders local"), QStringLiteral("launchApplication ") + core(),
                           QStringLiteral("terminate")}));
}

TEST_F(LauncherAppDelegate, TheLogTellsTheSteps) {
    start();
    EXPECT_EQ(getLogFilePath(),
              home.path(QStringLiteral("Library/Logs/Quillmark/Quillmark/Quillmark-2024-03-05-141502.log")));
    EXPECT_EQ(messagesOf(getLogFilePath()),
              QStringList({QStringLiteral("Quillmark version ") + versionOfThisAppAsString(true),
                           QStringLiteral("Quillmark did begin launching..."),
                           QStringLiteral("Quillmark did finish launching"),
                           QStringLiteral("Launching \"") + core() + QStringLiteral("\"..."),
                           QStringLiteral("Launched \"") + core() + u'"', QStringLiteral("Will terminate now")}));
    EXPECT_FALSE(contentsOf(getLogFilePath()).contains("(ERR)"));
}

TEST_F(LauncherAppDelegate, BesideARunningCoreThereIsAnAlertAndTheEndAndNothingElse) {
    for (const auto &[key, text] : {std::pair("QuillmarkLauncher_AlreadyRunning", "It runs."),
                                    {"QuillmarkLauncher_YouMustQuit", "Quit it first."},
                                    {"Quit", "Leave"}}) {
        platform.bundle.strings.insert(QString::fromLatin1(key), QString::fromLatin1(text));
    }
    platform.tasks.statuses.insert(kFirstPipeline, 0);
    start();
    EXPECT_EQ(platform.transcript.calls().mid(3),
              pipelines() + QStringList({QStringLiteral("runModal [Quillmark] It runs. | Quit it first. | Leave"),
                                         QStringLiteral("terminate")}));
    EXPECT_EQ(
        messagesOf(getLogFilePath()).mid(2),
        QStringList({QStringLiteral("Letting other copy run, we will terminate"), QStringLiteral("User did quit")}));
    EXPECT_TRUE(delegate().staleBundles().isEmpty());
}

TEST_F(LauncherAppDelegate, EveryNameFollowsTheLocalisedProductName) {
    platform.bundle.strings[QStringLiteral("ProductName")] = QStringLiteral("Feder");
    platform.bundle.resources << QStringLiteral("FederCore.app");
    start();
    EXPECT_TRUE(platform.transcript.calls().contains(QStringLiteral("launchApplication ") +
                                                     platform.bundle.resourcePath() +
                                                     QStringLiteral("/FederCore.app/Contents/MacOS/FederCore")));
    EXPECT_TRUE(delegate().staleBundles().contains(QStringLiteral("/Applications/Feder Client-3.app")));
    EXPECT_TRUE(getLogFilePath().contains(QStringLiteral("/Library/Logs/Feder/Feder/Feder-")));
}

TEST_F(LauncherAppDelegate, TheStaleCopiesAreListed) {
    start();
    EXPECT_EQ(delegate().staleBundles().size(), 24);
}

TEST_F(LauncherAppDelegate, TheBrandIsTheConfigurationsNumber) {
    EXPECT_EQ(delegate().brandId(), 0);
    start();
    EXPECT_EQ(delegate().brandId(), 15);
}

TEST_F(LauncherAppDelegate, ABrandGivenAsTextIsReadAsANumber) {
    platform.propertyList.documents.insert("config", QVariantMap{{QStringLiteral("Brand"), QStringLiteral("10001 x")}});
    start();
    EXPECT_EQ(delegate().brandId(), 10001);
}

TEST_F(LauncherAppDelegate, AMissingConfigurationMeansBrandZeroAndTheStartGoesOn) {
    platform.bundle.resources.removeAll(QStringLiteral("Config.plist"));
    start();
    EXPECT_EQ(delegate().brandId(), 0);
}

TEST_F(LauncherAppDelegate, StoredSettingsWinOverTheDefaults) {
    platform.userDefaults.stored.insert(QStringLiteral("FileLogging"), QStringLiteral("detailed"));
    start();
    EXPECT_EQ(_fileLoggingLevel, kLogLevelDetailed);
    EXPECT_EQ(_stdioLoggingLevel, kLogLevelError);
}

TEST_F(LauncherAppDelegate, AFailedLaunchIsNotNoticed) {
    platform.transcript.failAt(QStringLiteral("launchApplication"), 1);
    start(); // deliberate: the launcher says that it launched, and ends
    EXPECT_EQ(messagesOf(getLogFilePath()).last(), QStringLiteral("Will terminate now"));
}

TEST_F(LauncherAppDelegate, AMissingCoreIsNotNoticedEither) {
    platform.bundle.resources.removeAll(QStringLiteral("QuillmarkCore.app"));
    start();
    EXPECT_TRUE(messagesOf(getLogFilePath()).contains(QStringLiteral("Launched \"(null)\"")));
}

TEST_F(LauncherAppDelegate, DamagedPreferencesAreReportedInTheLog) {
    platform.userDefaults.damaged = QStringLiteral("/home/t/x.plist.damaged");
    testing::internal::CaptureStderr();
    start();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("/home/t/x.plist.damaged"), std::string::npos);
    EXPECT_TRUE(contentsOf(getLogFilePath()).contains("(ERR)"));
    EXPECT_EQ(messagesOf(getLogFilePath()).size(), 7);
}

TEST_F(LauncherAppDelegate, AnInvalidLevelIsAFaultBeforeAnythingIsLaunched) {
    platform.userDefaults.stored.insert(QStringLiteral("FileLogging"), QStringLiteral("loud"));
    EXPECT_THROW(delegate().applicationDidFinishLaunching(), Exception);
    EXPECT_FALSE(platform.transcript.calls().contains(QStringLiteral("terminate")));
}

using LauncherAppDelegateDeathTest = LauncherAppDelegate;

TEST_F(LauncherAppDelegateDeathTest, MissingDefaultsEndTheProcessForWantOfALevel) {
    platform.bundle.resources.removeAll(QStringLiteral("Defaults.plist"));
    EXPECT_EXIT(delegate().applicationDidFinishLaunching(), testing::KilledBySignal(SIGABRT),
                "ASSERTION ERROR: fileLevel \\(");
}

} // namespace
} // namespace quillmark
