#include "accounts/KeyList.h"
#include "branding/BrandingManager.h"
#include "desktop/MovePlan.h"
#include "installcheck/InstallCheckManager.h"
#include "launcher/Quillmark_LauncherAppDelegate.h"
#include "support/LogFixture.h"
#include "tools/UpdateToolManager.h"
#include "utils/Exception.h"
#include "utils/Version.h"

#include <QRegularExpression>

namespace quillmark {
namespace {

class LauncherAppDelegate : public test::LogFixture {
protected:
    LauncherAppDelegate() {
        gAlsoRemoveBundlePaths.clear();
        platform.bundle.bundlePath = home.path(QStringLiteral("Applications/Quillmark.app"));
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
        home.write(QStringLiteral("Applications/Quillmark.app/Contents/Resources/") + name, document);
        platform.propertyList.documents.insert(document, values);
    }
    /// Puts the bundle into a download folder, and an old copy of it where a move leads.
    void leaveApplications() {
        ASSERT_TRUE(QDir().rename(home.path(QStringLiteral("Applications")), home.path(QStringLiteral("Downloads"))));
        platform.bundle.bundlePath = home.path(QStringLiteral("Downloads/Quillmark.app"));
        platform.workspace.localFolders = {home.makeFolder(QStringLiteral("computer"))};
        platform.workspace.ownFolder = home.path();
        home.write(QStringLiteral("computer/Quillmark.app/old"), "old");
    }
    void setItems(const QVariantList &items) {
        platform.propertyList.documents.insert("catalogue", QVariantMap{{QStringLiteral("RequiredItems"), items}});
    }
    static RequiredItem item(const char *type, const char *name, const QString &installPath) {
        return {{kInstallType, QString::fromUtf8(type)}, {kName, QString::fromUtf8(name)}, {kInstallPath, installPath}};
    }
    /// A tool in order: the administrator's, with mode 0755, and as new as this application.
    RequiredItem toolInOrder() {
        const QString path = QStringLiteral("/usr/bin/env");
        platform.tasks.outputs.insert(path, "Limited 1.14.0.0");
        return item("QMTool", "env", path);
    }
    /// Runs the start-up to the point where the process would end.
    void start() { EXPECT_THROW(delegate().applicationDidFinishLaunching(), test::Terminated); }
    Quillmark_LauncherAppDelegate &delegate() {
        if (!m_delegate) {
            m_strings.emplace(platform.bundle);
            m_delegate.emplace(platform.platform, *m_strings, [this]() -> InstallCheckManager & {
                if (!m_installCheck) {
                    m_branding.emplace(platform.bundle, platform.images, *m_strings, [] { return -1; });
                    m_installCheck.emplace(platform.platform, *m_strings, *m_branding, m_updateTool);
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
    /// The search for stale copies, and the thought of a move.
    static QStringList looksAround() {
        return {QStringLiteral("applicationsFolders user"), QStringLiteral("applicationsFolders local"),
                QStringLiteral("objectForKey moveToApplicationsFolderAlertSuppress"),
                QStringLiteral("applicationsFolders all")};
    }
    static inline const QString kFirstPipeline =
        QStringLiteral("ps ax -o comm | fgrep 'QuillmarkCore' | grep -v grep | grep -v relaunchqm > /dev/null");
    QString core() const {
        return platform.bundle.resourcePath() + QStringLiteral("/QuillmarkCore.app/Contents/MacOS/QuillmarkCore");
    }

private:
    std::optional<LocalizedStrings> m_strings;
    UpdateToolManager m_updateTool{platform.platform};
    std::optional<BrandingManager> m_branding;
    std::optional<InstallCheckManager> m_installCheck;
    std::optional<Quillmark_LauncherAppDelegate> m_delegate;
};

TEST_F(LauncherAppDelegate, TheStepsComeStrictlyInOrder) {
    start();
    EXPECT_EQ(platform.transcript.calls(),
              QStringList({QStringLiteral("registerDefaults FileLogging,StdioLogging"),
                           QStringLiteral("objectForKey FileLogging"), QStringLiteral("objectForKey StdioLogging"),
                           pipelines()[0], pipelines()[1], pipelines()[2]}) +
                  looksAround() +
                  QStringList({QStringLiteral("launchApplication ") + core(), QStringLiteral("terminate")}));
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

TEST_F(LauncherAppDelegate, TheLogTellsOfTheSearchForOlderCopiesBeforeItBegins) {
    platform.userDefaults.stored.insert(QStringLiteral("FileLogging"), QStringLiteral("verbose"));
    QByteArray log; // as it lies on the disk
    platform.workspace.onApplicationsFolders = [&log] { log = test::readAll(getLogFilePath()); };
    start();
    EXPECT_TRUE(log.endsWith("Looking for older copies of the client...\n"));
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
    EXPECT_TRUE(gAlsoRemoveBundlePaths.isEmpty());
}

TEST_F(LauncherAppDelegate, AMoveComesBehindTheStaleCopiesAndIsTheEnd) {
    leaveApplications();
    setItems({item("QMTool", "gone", QStringLiteral("/none"))});
    platform.alerts.answers = {{0, false}};
    _setStandardStreams(nullptr, nullptr);
    start();
    const QStringList calls = platform.transcript.calls().filter(QRegularExpression(QStringLiteral("^(?!objectFor)")));
    const qsizetype offer =
        calls.indexOf(QRegularExpression(QStringLiteral("^runModal .*Move to Applications folder.*")));
    EXPECT_EQ(calls.mid(offer - 5, 5),
              QStringList({QStringLiteral("applicationsFolders user"), QStringLiteral("applicationsFolders local"),
                           QStringLiteral("applicationsFolders all"), QStringLiteral("applicationsFolders local"),
                           QStringLiteral("downloadsFolders")}));
    EXPECT_TRUE(calls[offer + 1].startsWith(QStringLiteral("recycle Quillmark.app in ")));
    EXPECT_TRUE(calls[offer + 3].startsWith(QStringLiteral("start /bin/sh -c ")));
    EXPECT_EQ(calls.mid(offer + 5), QStringList{QStringLiteral("terminate")});
    EXPECT_EQ(messagesOf(getLogFilePath()).last(), QStringLiteral("Moving myself to the Applications folder"));
}

TEST_F(LauncherAppDelegate, AMoveThatIsNotWantedIsFollowedByTheRestOfTheStart) {
    leaveApplications();
    start();
    EXPECT_EQ(platform.transcript.calls().filter(QStringLiteral("runModal")).size(), 1);
    EXPECT_EQ(platform.transcript.calls().mid(platform.transcript.calls().size() - 2),
              QStringList({QStringLiteral("launchApplication ") + core(), QStringLiteral("terminate")}));
    EXPECT_TRUE(messagesOf(getLogFilePath()).contains(QStringLiteral("Quillmark did finish launching")));
}

TEST_F(LauncherAppDelegate, AMoveThatIsNotWantedMayBeFollowedByFaultyComponents) {
    leaveApplications();
    setItems({item("QMTool", "gone", QStringLiteral("/none"))});
    _setStandardStreams(nullptr, nullptr);
    EXPECT_TRUE(delegate().applicationDidFinishLaunching());
    const QStringList calls = platform.transcript.calls();
    EXPECT_LT(calls.indexOf(QRegularExpression(QStringLiteral("^runModal .*"))), calls.indexOf(u"bringToFront"));
    EXPECT_FALSE(calls.contains(u"terminate"));
}

TEST_F(LauncherAppDelegate, ComponentsInOrderAreExaminedLastOfAllBeforeTheLaunch) {
    setItems({toolInOrder(), item("Framework", "Mono", QStringLiteral("/none"))});
    platform.userDefaults.stored.insert(QStringLiteral("FileLogging"), QStringLiteral("verbose"));
    start();
    EXPECT_EQ(platform.transcript.calls().mid(6),
              looksAround() +
                  QStringList({QStringLiteral("launch /usr/bin/env "), QStringLiteral("launchApplication ") + core(),
                               QStringLiteral("terminate")}));
    const QStringList lines = linesOf(getLogFilePath());
    EXPECT_EQ(
        lines.mid(lines.indexOf(QStringLiteral("nrm Quillmark did finish launching"))),
        QStringList({QStringLiteral("nrm Quillmark did finish launching"),
                     QStringLiteral("vrb \"/usr/bin/env\" does not need to update from 1.14.0.0"),
                     QStringLiteral("vrb Install check: QMTool \"env\" is \"OK\""),
                     QStringLiteral("vrb Install check: Framework \"Mono\" is \"OK\""),
                     QStringLiteral("nrm Launching \"") + core() + QStringLiteral("\"..."),
                     QStringLiteral("nrm Launched \"") + core() + u'"', QStringLiteral("nrm Will terminate now")}));
}

TEST_F(LauncherAppDelegate, FaultyComponentsAreLoggedAsErrorsAndNothingIsLaunched) {
    platform.bundle.strings.insert(QStringLiteral("Missing"), QStringLiteral("fehlt"));
    resource(QStringLiteral("logo-1.bmp"), "logo", {});
    platform.images.pictures.insert(platform.bundle.resourcePath() + QStringLiteral("/logo-1.bmp"),
                                    Image{{}, 1, 1, "abcd"});
    RequiredItem notRequired = item("FinderOverlayInsert", "later", QStringLiteral("/none"));
    notRequired.insert(kMinMacOSXVersion, QStringLiteral("10.6"));
    const QString old = home.write(QStringLiteral("old.plugin"), "");
    setItems({item("QMTool", "gone", QStringLiteral("/none")), toolInOrder(), notRequired, item("FinderCM", "old", old),
              item("Bundle", "fs", QStringLiteral("/none.fs"))});
    _setStandardStreams(nullptr, nullptr);
    EXPECT_TRUE(delegate().applicationDidFinishLaunching()); // comes back, and the window is up
    EXPECT_EQ(platform.transcript.calls().last(), QStringLiteral("bringToFront"));
    const QStringList calls = platform.transcript.calls();
    EXPECT_EQ(calls.mid(calls.indexOf(u"applicationsFolders user"), 5),
              looksAround() + QStringList{QStringLiteral("launch /usr/bin/env ")});
    EXPECT_EQ(linesOf(getLogFilePath()).mid(2),
              QStringList({QStringLiteral("nrm Quillmark did finish launching"),
                           QStringLiteral("ERR \"gone\" is not in order: fehlt (\"/none\")"),
                           QStringLiteral("ERR \"old\" is not in order: Old Version (\"") + old + QStringLiteral("\")"),
                           QStringLiteral("ERR \"fs\" is not in order: fehlt (\"/none.fs\")")}));
}

TEST_F(LauncherAppDelegate, WithoutAWindowFaultyComponentsAreToldInAnAlertAndAreTheEnd) {
    platform.checkWindows.canBeShown = false;
    setItems({item("QMTool", "gone", QStringLiteral("/none")), toolInOrder(),
              item("Bundle", "fs", QStringLiteral("/none.fs"))});
    _setStandardStreams(nullptr, nullptr);
    EXPECT_FALSE(delegate().applicationDidFinishLaunching());
    EXPECT_EQ(platform.transcript.calls().last(),
              QStringLiteral("runModal [Quillmark] RunFailedTitle | gone (Missing)\nfs (Missing) | Quit"));
}

TEST_F(LauncherAppDelegate, ACatalogueThatCannotBeReadIsReportedAndTheCoreIsLaunched) {
    platform.bundle.resources.removeAll(QStringLiteral("RequiredItems.plist"));
    _setStandardStreams(nullptr, nullptr);
    start();
    EXPECT_EQ(linesOf(getLogFilePath())[3],
              QStringLiteral("ERR The catalogue of required items (\"") + platform.bundle.resourcePath() +
                  QStringLiteral("/RequiredItems.plist\") can't be read: no component is checked"));
    EXPECT_EQ(platform.transcript.calls().last(), QStringLiteral("terminate"));
}

TEST_F(LauncherAppDelegate, TheWindowForAMissingComponentIsLoadedWhileTheProcessTableIsAsked) {
    setItems({item("QMTool", "gone", QStringLiteral("/none"))});
    _setStandardStreams(nullptr, nullptr);
    EXPECT_TRUE(delegate().applicationDidFinishLaunching());
    const QStringList calls = platform.transcript.calls();
    const qsizetype next = calls.indexOf(u"applicationsFolders user");
    EXPECT_EQ(calls[3], QStringLiteral("prepare"));
    EXPECT_LT(calls.indexOf(u"load InstallCheck.ui"), next);
    for (const QString &pipeline : pipelines()) {
        EXPECT_LT(calls.indexOf(pipeline), next);
    }
}

TEST_F(LauncherAppDelegate, BesideARunningCoreNoComponentIsExaminedAndNoWindowComesUp) {
    setItems({toolInOrder(), item("QMTool", "gone", QStringLiteral("/none"))});
    platform.tasks.statuses.insert(kFirstPipeline, 0);
    start();
    EXPECT_FALSE(platform.transcript.calls().contains(u"launch /usr/bin/env "));
    EXPECT_FALSE(platform.transcript.calls().contains(u"bringToFront"));
}

TEST_F(LauncherAppDelegate, EveryNameFollowsTheLocalisedProductName) {
    platform.bundle.strings[QStringLiteral("ProductName")] = QStringLiteral("Feder");
    platform.bundle.resources << QStringLiteral("FederCore.app");
    start();
    EXPECT_TRUE(platform.transcript.calls().contains(QStringLiteral("launchApplication ") +
                                                     platform.bundle.resourcePath() +
                                                     QStringLiteral("/FederCore.app/Contents/MacOS/FederCore")));
    EXPECT_TRUE(gAlsoRemoveBundlePaths.contains(QStringLiteral("/Applications/Feder Client-3.app")));
    EXPECT_EQ(gAltDstBundleName, QStringLiteral("Feder"));
    EXPECT_TRUE(getLogFilePath().contains(QStringLiteral("/Library/Logs/Feder/Feder/Feder-")));
}

TEST_F(LauncherAppDelegate, TheStaleCopiesAreListed) {
    start();
    EXPECT_EQ(gAlsoRemoveBundlePaths.size(), 24);
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
