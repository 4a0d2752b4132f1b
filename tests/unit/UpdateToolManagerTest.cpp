#include "tools/UpdateToolManager.h"
#include "support/InstallCheckFixture.h"
#include "utils/Exception.h"
#include "utils/UUIDString.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

namespace quillmark {
namespace {

using test::listOf;

constexpr qint32 kSucceeded = UpdateToolManager::kSucceeded;
constexpr qint32 kRunFailed = UpdateToolManager::kRunFailed;
constexpr qint32 kCommandBegun = UpdateToolManager::kCommandBegun;

const QString a = QStringLiteral("/a b/é.pkg");
const QString b = QStringLiteral("b.sig");
const QString c = QStringLiteral("/c");

/// The update tool as fakes run it.
class UpdateTool : public test::LogFixture {
protected:
    UpdateTool() { _setStandardStreams(nullptr, nullptr); }

    /// From now on, the tool's runs end with that status.
    void endWith(int status) {
        for (const QString &last :
             {a, b, c, home.path(QStringLiteral(".config/.mono/keypairs")), QStringLiteral("insertfinderoverlay"),
              QStringLiteral("MacFUSE.pkg"), QStringLiteral("/x/macfuse-2.pkg")}) {
            platform.tasks.statuses.insert(last, status);
        }
    }
    void startLog(LoggingLevel level = kLogLevelDetailed) { m_log = logToFile(level); }
    QStringList log() const {
        QStringList lines = linesOf(m_log);
        return lines.replaceInStrings(home.path(), QStringLiteral("~"));
    }
    QStringList calls() const {
        QStringList list = platform.transcript.calls();
        return list.replaceInStrings(home.path(), QStringLiteral("~"));
    }

    const QString m_macFuseLog = home.path(QStringLiteral("install.log"));
    UpdateToolManager manager{platform.platform, QString(kToolPath), m_macFuseLog};

private:
    QString m_log;
};

struct Command {
    const char *name;
    std::function<qint32(UpdateToolManager &)> call;
    const char *arguments;
};

void PrintTo(const Command &command, std::ostream *stream) { *stream << command.name; }

using Manager = UpdateToolManager;

// What each command runs the installed tool with.
const Command kCommands[] = {
    {"repairCoreAppPermissions", [](Manager &m) { return m.repairCoreAppPermissions(a); }, "repaircore /a b/é.pkg"},
    {"repairQMTool", [](Manager &m) { return m.repairQMTool(a, b); }, "repairother /a b/é.pkg b.sig"},
    {"repairQMToolPermissions", [](Manager &m) { return m.repairQMToolPermissions(b); },
     "repairpermissionsother b.sig"},
    {"repairBundleUsingPackage", [](Manager &m) { return m.repairBundleUsingPackage(a); }, "repairpackage /a b/é.pkg"},
    {"repairFrameworkUsingPackage", [](Manager &m) { return m.repairFrameworkUsingPackage(a); },
     "repairpackage /a b/é.pkg"},
    {"repairQMToolRootPermissions", [](Manager &m) { return m.repairQMToolRootPermissions(b); },
     "repairpermissionsotherroot b.sig"},
    {"repairQMToolRoot", [](Manager &m) { return m.repairQMToolRoot(a, b); }, "repairotherroot /a b/é.pkg b.sig"},
    {"repairZIPArchive", [](Manager &m) { return m.repairZIPArchive(a, b, c); }, "repairzipitem /a b/é.pkg b.sig /c"},
    {"repairIntel10_5", [](Manager &m) { return m.repairIntel10_5(a, b); }, "repairintel10_5 /a b/é.pkg b.sig"},
    {"installClientUpdate", [](Manager &m) { return m.installClientUpdate(a, b, c); },
     "applyfullupdate /a b/é.pkg b.sig /c"},
    {"repairMonoKeypairPermissions", [](Manager &m) { return m.repairMonoKeypairPermissions(); },
     "fixmonokeypairs ~/.config/.mono/keypairs"},
};

class UpdateToolCommands : public UpdateTool, public testing::WithParamInterface<Command> {
protected:
    static inline const QString kTool = QStringLiteral("/Library/Application Support/Quillmark/updateqm");
    QString wantedRun() const {
        return QStringLiteral("run ") + kTool + u' ' + QString::fromUtf8(GetParam().arguments);
    }
};

TEST_P(UpdateToolCommands, RunTheInstalledToolAndWait) {
    endWith(0);
    EXPECT_EQ(manager.status(), UpdateToolManager::kNothingDone);
    EXPECT_EQ(GetParam().call(manager), kSucceeded);
    EXPECT_EQ(manager.status(), kSucceeded);
    EXPECT_EQ(calls().first(), wantedRun());
    EXPECT_EQ(calls().filter(QStringLiteral("run ")).size(), 1);
}

TEST_P(UpdateToolCommands, ThatFailReturnFourAndLeaveFive) {
    endWith(1);
    EXPECT_EQ(GetParam().call(manager), kRunFailed);
    EXPECT_EQ(manager.status(), kCommandBegun); // deliberate: the status is that of the begun command
    EXPECT_EQ(calls(), QStringList{wantedRun()});
}

TEST_P(UpdateToolCommands, ThatCannotBeStartedFailToo) {
    platform.tasks.canStart = false;
    EXPECT_EQ(GetParam().call(manager), kRunFailed);
    EXPECT_EQ(manager.status(), kCommandBegun);
}

TEST_P(UpdateToolCommands, BeginAnewAfterASuccess) {
    endWith(0);
    GetParam().call(manager);
    endWith(7);
    GetParam().call(manager);
    EXPECT_EQ(manager.status(), kCommandBegun);
    endWith(0);
    GetParam().call(manager);
    EXPECT_EQ(manager.status(), kSucceeded);
}

INSTANTIATE_TEST_SUITE_P(Each, UpdateToolCommands, testing::ValuesIn(kCommands),
                         [](const auto &suite) { return std::string(suite.param.name); });

using UpdateToolRun = UpdateTool;

TEST_F(UpdateToolRun, OfStatusZeroSucceeds) {
    endWith(0);
    startLog();
    EXPECT_EQ(manager.runExe(QStringLiteral("/t"), {QStringLiteral("x"), a}, true), kSucceeded);
    EXPECT_EQ(calls(), listOf({"run /t x /a b/é.pkg"}));
    EXPECT_EQ(log(), listOf({"vrb UpdateToolManager:runExe: Running \"/t\"...",
                             "vrb UpdateToolManager:runExe: Succeeded running \"/t\""}));
    EXPECT_EQ(manager.status(), UpdateToolManager::kNothingDone);
}

TEST_F(UpdateToolRun, OfAnyOtherStatusFails) {
    for (const int status : {1, 3, 127, 128 + 9}) {
        endWith(status);
        startLog();
        EXPECT_EQ(manager.runExe(QStringLiteral("/t"), {a}, true), kRunFailed);
        EXPECT_EQ(log().mid(log().size() - 2), listOf({"vrb UpdateToolManager:runExe: Running \"/t\"...",
                                                       "ERR UpdateToolManager:runExe: Failed running \"/t\""}));
    }
}

TEST_F(UpdateToolRun, ThatRaisesIsLoggedWithItsExceptionAndFails) {
    platform.tasks.canStart = false;
    startLog();
    EXPECT_EQ(manager.runExe(QStringLiteral("/t"), {a}, true), kRunFailed);
    const QStringList lines = listOf({"vrb UpdateToolManager:runExe: Running \"/t\"...",
                                      "ERR UpdateToolManager:runExe: Exception during running \"/t\" "
                                      "(NSInvalidArgumentException (launch path not accessible))",
                                      "ERR UpdateToolManager:runExe: Failed running \"/t\""});
    EXPECT_EQ(log(), lines);
    EXPECT_EQ(manager.runExe(QStringLiteral("/t"), {a}, false), kRunFailed);
    EXPECT_EQ(log(), lines + lines);
}

TEST_F(UpdateToolRun, ThatIsNotWaitedForCountsAsFailed) { // deliberate, unlike one of the overlay tool
    endWith(0);
    startLog();
    EXPECT_EQ(manager.runUpdateTool({QStringLiteral("repaircore"), a}, false), kRunFailed);
    EXPECT_EQ(calls(), listOf({"start /Library/Application Support/Quillmark/updateqm repaircore /a b/é.pkg"}));
    EXPECT_EQ(log(), listOf({"vrb UpdateToolManager:runExe: Running "
                             "\"/Library/Application Support/Quillmark/updateqm\"...",
                             "ERR UpdateToolManager:runExe: Failed running "
                             "\"/Library/Application Support/Quillmark/updateqm\""}));
    EXPECT_EQ(manager.status(), UpdateToolManager::kNothingDone);
}

TEST_F(UpdateToolRun, OfARealProgramEndsWithItsStatus) {
    const Platform &fake = platform.platform;
    const Platform real{fake.alerts,     fake.appleEvents,       fake.application,  fake.authorization,
                        fake.mainBundle, fake.checkWindows,      fake.clock,        fake.images,
                        fake.keychain,   fake.mainThread,        fake.propertyList, fake.scripts,
                        fake.systemInfo, nativePlatform().tasks, fake.userDefaults, fake.workspace};
    UpdateToolManager runner(real, QStringLiteral("/bin/%@"));
    const auto shell = [&runner](const char *script) {
        return runner.runExe(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QString::fromUtf8(script)}, true);
    };
    EXPECT_EQ(shell("exit 0"), kSucceeded);
    EXPECT_EQ(shell("exit 1"), kRunFailed);
    EXPECT_EQ(shell("kill -KILL $$"), kRunFailed);
    EXPECT_EQ(runner.runExe(home.path(QStringLiteral("none")), {}, true), kRunFailed);
}

class OverlayTool : public UpdateTool {
protected:
    const QStringList m_running =
        listOf({"vrb Running FinderOverlayTool \"/Library/Application Support/Quillmark/finderoverlaytool\"..."});
    const QStringList m_succeeded =
        listOf({"vrb FinderOverlayTool \"/Library/Application Support/Quillmark/finderoverlaytool\" did succeed"});
};

TEST_F(OverlayTool, IsRunToInsertTheOverlay) {
    endWith(0);
    startLog();
    EXPECT_EQ(manager.insertFinderOverlayBundle(), kSucceeded);
    EXPECT_EQ(manager.status(), kSucceeded);
    EXPECT_EQ(calls(), listOf({"run /Library/Application Support/Quillmark/finderoverlaytool insertfinderoverlay"}));
    EXPECT_EQ(log(), m_running + m_succeeded);
}

TEST_F(OverlayTool, ThatFailsReturnsFourAndLeavesFive) {
    endWith(2);
    startLog();
    EXPECT_EQ(manager.insertFinderOverlayBundle(), kRunFailed);
    EXPECT_EQ(manager.status(), kCommandBegun);
    EXPECT_EQ(log(), m_running + listOf({"vrb FinderOverlayTool \"/Library/Application Support/Quillmark/"
                                         "finderoverlaytool\" did fail"}));
}

TEST_F(OverlayTool, ThatIsNotWaitedForCountsAsSucceeded) { // deliberate, unlike a run of the update tool
    endWith(1);
    startLog();
    EXPECT_EQ(manager.runFinderOverlayTool({a}, false), kSucceeded);
    EXPECT_EQ(calls(), listOf({"start /Library/Application Support/Quillmark/finderoverlaytool /a b/é.pkg"}));
    EXPECT_EQ(log(), m_running + m_succeeded);
}

TEST_F(OverlayTool, ThatCannotBeStartedRaisesAnException) {
    platform.tasks.canStart = false;
    EXPECT_THROW(manager.runFinderOverlayTool({a}, true), Exception);
    EXPECT_THROW(manager.runFinderOverlayTool({a}, false), Exception);
    EXPECT_THROW(manager.insertFinderOverlayBundle(), Exception);
    EXPECT_EQ(manager.status(), kCommandBegun);
}

/// One of the two runs with administrator rights.
struct AdminRun {
    const char *name;
    std::function<qint32(UpdateToolManager &)> call;
    const char *operation;
    const char *program; ///< with its arguments
    QStringList before;  ///< log lines
    QStringList behindRights;
};

void PrintTo(const AdminRun &run, std::ostream *stream) { *stream << run.name; }

class UpdateToolAsAdmin : public UpdateTool, public testing::WithParamInterface<AdminRun> {
protected:
    qint32 call() { return GetParam().call(manager); }
    QString line(const char *level, const char *text) const {
        return QStringLiteral("%1 UpdateToolManager:%2: %3")
            .arg(QString::fromUtf8(level), QString::fromUtf8(GetParam().operation), QString::fromUtf8(text));
    }
    QStringList starting() const { return GetParam().before + QStringList{line("nrm", "Starting...")}; }
    QString execution() const {
        return QStringLiteral("AuthorizationExecuteWithPrivileges ") + QString::fromUtf8(GetParam().program);
    }
    static inline const QStringList kAsked =
        listOf({"AuthorizationCreate", "AuthorizationCopyRights system.privilege.admin 13"});
    static inline const QStringList kFreed = listOf({"AuthorizationFree"});
};

TEST_P(UpdateToolAsAdmin, AsksForTheRightAndStartsTheTool) {
    startLog();
    EXPECT_EQ(call(), kSucceeded);
    EXPECT_EQ(manager.status(), kSucceeded);
    EXPECT_EQ(calls(), kAsked + QStringList{execution()} + kFreed);
    EXPECT_EQ(log(), starting() + GetParam().behindRights + QStringList{line("nrm", "Succeeded")});
}

TEST_P(UpdateToolAsAdmin, WithoutAnyAuthorizationReturnsFourWithoutAWord) {
    platform.authorization.createStatus = -60008;
    startLog();
    EXPECT_EQ(call(), kRunFailed);
    EXPECT_EQ(manager.status(), kCommandBegun);
    EXPECT_EQ(calls(), listOf({"AuthorizationCreate"}));
    EXPECT_EQ(log(), starting());
}

TEST_P(UpdateToolAsAdmin, ThatTheUserRefusesReturnsFourAndLeavesTheStatus) {
    for (const auto &[status, text] : {std::pair(-60006, "AuthorizationCopyRights failed (OSStatus -60006)"),
                                       {-60005, "AuthorizationCopyRights failed (OSStatus -60005)"}}) {
        platform.transcript.clear();
        platform.authorization.rightsStatus = status;
        startLog();
        EXPECT_EQ(call(), kRunFailed);
        EXPECT_EQ(manager.status(), kCommandBegun);
        EXPECT_EQ(calls(), kAsked + kFreed);
        const QStringList wanted = starting() + QStringList{line("ERR", text)};
        EXPECT_EQ(log().mid(log().size() - wanted.size()), wanted);
    }
}

TEST_P(UpdateToolAsAdmin, ThatCannotBeStartedReturnsFourAndLeavesFour) {
    platform.authorization.executeStatus = -60031;
    startLog();
    EXPECT_EQ(call(), kRunFailed);
    EXPECT_EQ(manager.status(), kRunFailed);
    EXPECT_EQ(calls(), kAsked + QStringList{execution()} + kFreed);
    EXPECT_EQ(log(), starting() + GetParam().behindRights +
                         QStringList{line("ERR", "AuthorizationExecuteWithPrivileges failed (OSStatus -60031)")});
}

INSTANTIATE_TEST_SUITE_P(
    Run, UpdateToolAsAdmin,
    testing::Values(AdminRun{"repairPermissions",
                             [](Manager &m) { return m.repairPermissions(); },
                             "runUpdateToolAsAdmin",
                             "/Library/Application Support/Quillmark/updateqm repairpermissions",
                             {},
                             {}},
                    AdminRun{"repairUpdateTool",
                             [](Manager &m) { return m.repairUpdateTool(QStringLiteral("/App/updateqm"), a); },
                             "runUninstalledUpdateToolAsAdmin",
                             "/App/updateqm repair /a b/é.pkg", // the tool's own path is no argument
                             listOf({"dtl updateQMSignaturePath is /a b/é.pkg"}),
                             listOf({"dtl Running /App/updateqm"})}),
    [](const auto &suite) { return std::string(suite.param.name); });

TEST_F(UpdateTool, WithoutACommandTheAdministratorsRunAloneDecidesTheStatus) {
    platform.authorization.rightsStatus = -60006;
    startLog();
    EXPECT_EQ(manager.runUpdateToolAsAdmin({"x"}), kRunFailed);
    EXPECT_EQ(manager.runUninstalledUpdateToolAsAdmin(c, {"x"}), kRunFailed);
    EXPECT_EQ(manager.status(), UpdateToolManager::kNothingDone);
    platform.authorization.rightsStatus = 0;
    EXPECT_EQ(manager.runUninstalledUpdateToolAsAdmin(c, {"x", "y"}), kSucceeded);
    EXPECT_EQ(manager.status(), kSucceeded);
    EXPECT_TRUE(calls().contains(QStringLiteral("AuthorizationExecuteWithPrivileges /c x y")));
}

/// The installation log that is kept after a package of MacFUSE.
class MacFuseLog : public UpdateTool {
protected:
    QString m_kept = home.path(QStringLiteral("Library/Logs/Quillmark/MacFUSE/macfuse-install.log"));

    void leaveLog() { home.write(QStringLiteral("install.log"), "installed\n"); }
    /// The log's lines about the installation log.
    QStringList keeping() const { return log().mid(2); }
    qint32 install(const char *package = "MacFUSE.pkg") {
        return manager.repairFrameworkUsingPackage(QString::fromUtf8(package));
    }
};

TEST_F(MacFuseLog, IsCopiedAmongTheProductsOwn) {
    endWith(0);
    leaveLog();
    startLog();
    EXPECT_EQ(install(), kSucceeded);
    EXPECT_EQ(test::readAll(m_kept), QByteArray("installed\n"));
    EXPECT_EQ(keeping(), listOf({"vrb \"~/Library/Logs/Quillmark/MacFUSE\" subfolder missing - created it",
                                 "vrb Copying \"~/install.log\" to "
                                 "\"~/Library/Logs/Quillmark/MacFUSE/macfuse-install.log\"...",
                                 "vrb Copied \"~/install.log\" to "
                                 "\"~/Library/Logs/Quillmark/MacFUSE/macfuse-install.log\" - MacFUSE log available"}));
}

TEST_F(MacFuseLog, IsKeptWhateverTheLetterCaseOfThePackage) {
    endWith(0);
    leaveLog();
    EXPECT_EQ(install("/x/macfuse-2.pkg"), kSucceeded);
    EXPECT_TRUE(QFile::exists(m_kept));
}

TEST_F(MacFuseLog, IsOfNoInterestAfterAnotherPackageOrABundle) {
    endWith(0);
    leaveLog();
    startLog();
    EXPECT_EQ(manager.repairFrameworkUsingPackage(a), kSucceeded);
    EXPECT_EQ(manager.repairBundleUsingPackage(QStringLiteral("MacFUSE.pkg")), kSucceeded);
    EXPECT_FALSE(QFile::exists(m_kept));
    EXPECT_EQ(log().size(), 4); // two runs
}

TEST_F(MacFuseLog, IsKeptAfterAFailedInstallationTooWhichStaysFailed) {
    endWith(1);
    leaveLog();
    EXPECT_EQ(install(), kRunFailed);
    EXPECT_EQ(manager.status(), kCommandBegun);
    EXPECT_TRUE(QFile::exists(m_kept));
}

TEST_F(MacFuseLog, ThatIsMissingIsNoted) {
    endWith(0);
    startLog();
    EXPECT_EQ(install(), kSucceeded);
    EXPECT_EQ(keeping(), listOf({"vrb \"~/install.log\" doesn't exists - no MacFUSE log will be available"}));
    EXPECT_FALSE(QFile::exists(home.path(QStringLiteral("Library"))));
}

TEST_F(MacFuseLog, IsNotTakenFromALinkThatAnybodyMayHavePutThere) {
    endWith(0);
    home.write(QStringLiteral("secret"), "secret");
    ASSERT_TRUE(QFile::link(home.path(QStringLiteral("secret")), home.path(QStringLiteral("install.log"))));
    startLog();
    EXPECT_EQ(install(), kSucceeded);
    EXPECT_FALSE(QFileInfo::exists(m_kept));
    EXPECT_TRUE(keeping().last().startsWith(QStringLiteral("ERR Failed to copy \"~/install.log\" to ")));
    EXPECT_TRUE(keeping().last().contains(QStringLiteral("It is no file of a trusted user's")));
}

TEST_F(MacFuseLog, DoesNotReplaceAnEarlierOne) {
    endWith(0);
    leaveLog();
    home.write(QStringLiteral("Library/Logs/Quillmark/MacFUSE/macfuse-install.log"), "earlier");
    platform.systemInfo.errorTexts.insert_or_assign(EEXIST, "File exists");
    startLog();
    EXPECT_EQ(install(), kSucceeded);
    EXPECT_EQ(manager.status(), kSucceeded);
    EXPECT_EQ(test::readAll(m_kept), QByteArray("earlier"));
    EXPECT_EQ(keeping(),
              listOf({"vrb Copying \"~/install.log\" to "
                      "\"~/Library/Logs/Quillmark/MacFUSE/macfuse-install.log\"...",
                      "ERR Failed to copy \"~/install.log\" to "
                      "\"~/Library/Logs/Quillmark/MacFUSE/macfuse-install.log\" "
                      "(\"Copying stopped at '~/Library/Logs/Quillmark/MacFUSE/macfuse-install.log'\" because "
                      "\"Posix error 17 (File exists)\")"}));
}

TEST_F(MacFuseLog, WhoseFolderCannotBeMadeIsAnExceptionThatGoesNoFurther) {
    endWith(0);
    leaveLog();
    home.write(QStringLiteral("Library/Logs"), "in the way");
    platform.systemInfo.errorTexts.insert_or_assign(ENOTDIR, "Not a directory");
    startLog();
    EXPECT_EQ(install(), kSucceeded);
    EXPECT_EQ(manager.status(), kSucceeded);
    EXPECT_EQ(keeping(), listOf({"ERR NSGenericException (Failed to create \"~/Library/Logs/Quillmark/MacFUSE\" "
                                 "(Not a directory))"}));
}

TEST_F(MacFuseLog, IsKeptBeforeTheCommandCountsAsDone) {
    endWith(0);
    leaveLog();
    startLog();
    QList<qint32> statuses;
    platform.clock.onNow = [this, &statuses] {
        statuses << manager.status();
    }; // each line of the log asks for the time
    install();
    platform.clock.onNow = {};
    EXPECT_EQ(QSet<qint32>(statuses.begin(), statuses.end()), QSet<qint32>{UpdateToolManager::kCommandBegun});
    EXPECT_EQ(manager.status(), kSucceeded);
}

TEST_F(MacFuseLog, IsLookedForInTheTemporaryFolder) {
    endWith(0);
    startLog();
    UpdateToolManager(platform.platform).repairFrameworkUsingPackage(QStringLiteral("MacFUSE.pkg"));
    // Whether there is one or not.
    EXPECT_TRUE(keeping().value(0).contains(QStringLiteral("\"/tmp/.macfuse-install.log\"")));
}

/// The Finder, which has loaded the old tool and is started anew.
class FinderRestart : public UpdateTool {
protected:
    FinderRestart() { endWith(0); }
    void run() { platform.workspace.addApplication(QStringLiteral("com.apple.finder"), 5); }
    qint32 repair() { return manager.repairQMToolRoot(a, b); }
    /// The log's lines behind those of the tool.
    QStringList behindTheRun() const { return log().mid(2); }
    static QStringList launching() {
        return listOf({"vrb Launching \"/System/Library/CoreServices/Finder.app\"...",
                       "vrb Launched \"/System/Library/CoreServices/Finder.app\""});
    }
    static inline const QString kLaunch = QStringLiteral("launchApplication /System/Library/CoreServices/Finder.app");
};

TEST_F(FinderRestart, IsALaunchAloneWhenItDoesNotRun) {
    startLog();
    EXPECT_EQ(repair(), kSucceeded);
    EXPECT_EQ(manager.status(), kSucceeded);
    EXPECT_EQ(calls().mid(1), QStringList({QStringLiteral("launchedApplications"), kLaunch}));
    EXPECT_EQ(behindTheRun(),
              listOf({"vrb Not requesting app with id \"com.apple.finder\" to quit because it isn't running"}) +
                  launching());
}

TEST_F(FinderRestart, QuitsItFirst) {
    run();
    platform.appleEvents.onSend = [this] { platform.workspace.applications.clear(); };
    startLog();
    EXPECT_EQ(repair(), kSucceeded);
    EXPECT_EQ(manager.status(), kSucceeded);
    EXPECT_EQ(calls().mid(1),
              QStringList({QStringLiteral("launchedApplications"), QStringLiteral("buildQuitEvent com.apple.finder"),
                           QStringLiteral("sendMessage"), QStringLiteral("launchedApplications"), kLaunch}));
    EXPECT_EQ(behindTheRun(), listOf({"vrb Requesting app with id \"com.apple.finder\" to quit...",
                                      "vrb Requested app with id \"com.apple.finder\" to quit",
                                      "vrb App with id \"com.apple.finder\" did quit"}) +
                                  launching());
}

TEST_F(FinderRestart, WaitsForFourSecondsAndGoesOn) {
    run();
    startLog();
    EXPECT_EQ(repair(), kSucceeded);
    EXPECT_EQ(manager.status(), kSucceeded);
    EXPECT_EQ(platform.clock.sleeps().size(), 6U);
    EXPECT_EQ(calls().last(), kLaunch);
    const QStringList lines = behindTheRun();
    EXPECT_EQ(lines.mid(lines.size() - 3), listOf({"vrb Didn't see Finder restart - continue anyway"}) + launching());
    EXPECT_FALSE(lines.join(u'\n').contains(QStringLiteral("ERR")));
}

TEST_F(FinderRestart, ThatCannotBeAskedToQuitIsAnErrorAndNothingIsLaunched) {
    run();
    platform.appleEvents.sendStatus = -600;
    startLog();
    EXPECT_EQ(repair(), kCommandBegun);
    EXPECT_EQ(manager.status(), kCommandBegun);
    EXPECT_FALSE(calls().contains(kLaunch));
    EXPECT_EQ(log().last(),
              QStringLiteral("ERR repairQMToolRoot failed (\"quitApplication failed\" because \"Request to quit app "
                             "wth id \"com.apple.finder\" failed (AESendMessage failed with error -600)\")"));
}

TEST_F(FinderRestart, ThatCannotBeLaunchedIsAnErrorAndYetLoggedAsLaunched) {
    platform.transcript.failAt(QStringLiteral("launchApplication"), 1);
    startLog();
    EXPECT_EQ(repair(), kCommandBegun);
    EXPECT_EQ(manager.status(), kCommandBegun);
    const QStringList lines = behindTheRun().mid(1); // deliberate: "Launched" comes in any case
    EXPECT_EQ(lines,
              launching() + listOf({"ERR repairQMToolRoot failed (\"launchApplication failed\" because "
                                    "\"launchApplication \"/System/Library/CoreServices/Finder.app\" failed\")"}));
}

TEST_F(FinderRestart, DoesNotFollowAFailedRepair) {
    endWith(1);
    run();
    EXPECT_EQ(repair(), kRunFailed);
    EXPECT_EQ(calls().size(), 1);
}

/// The look at an installed tool.
class InstalledTool : public test::InstallCheckFixture {
protected:
    qint32 verified(const QString &name) {
        const qint32 result = updateTool.verifyUpdateTool(name);
        EXPECT_EQ(updateTool.status(), result);
        return result;
    }
    UpdateToolManager own{platform.platform, home.path(QStringLiteral("%@"))};
};

TEST_F(InstalledTool, OfTheAdministratorWithTheSetUserIdBitIsInOrder) {
    EXPECT_EQ(verified(QStringLiteral("passwd")), UpdateToolManager::kSucceeded);
}

TEST_F(InstalledTool, WithoutTheSetUserIdBitHasWrongPermissions) {
    EXPECT_EQ(verified(QStringLiteral("env")), UpdateToolManager::kToolHasWrongPermissions);
}

TEST_F(InstalledTool, ThatIsNotThereIsMissing) {
    EXPECT_EQ(verified(QStringLiteral("no such tool")), UpdateToolManager::kToolMissing);
}

TEST_F(InstalledTool, OfSomebodyElseHasWrongPermissionsWhateverItsMode) {
    installTool(QStringLiteral("tool"), "", 04755);
    EXPECT_EQ(own.verifyUpdateTool(QStringLiteral("tool")), UpdateToolManager::kToolHasWrongPermissions);
}

TEST_F(InstalledTool, ThatIsALinkHasWrongPermissions) {
    ASSERT_TRUE(QFile::link(kSetUserIdTool, home.path(QStringLiteral("link"))));
    EXPECT_EQ(own.verifyUpdateTool(QStringLiteral("link")), UpdateToolManager::kToolHasWrongPermissions);
}

TEST_F(InstalledTool, ThatIsADanglingLinkIsMissing) {
    ASSERT_TRUE(QFile::link(home.path(QStringLiteral("gone")), home.path(QStringLiteral("link"))));
    EXPECT_EQ(own.verifyUpdateTool(QStringLiteral("link")), UpdateToolManager::kToolMissing);
    EXPECT_EQ(own.status(), UpdateToolManager::kToolMissing);
}

TEST_F(InstalledTool, IsLookedForInTheProductsFolder) {
    UpdateToolManager manager(platform.platform);
    EXPECT_EQ(manager.verifyUpdateTool(UUIDString()), UpdateToolManager::kToolMissing);
    EXPECT_EQ(manager.verifyUpdateTool(QStringLiteral("../../../usr/bin/env")), UpdateToolManager::kToolMissing);
}

} // namespace
} // namespace quillmark
