#include "tools/UpdateToolManager.h"
#include "platform/process/AtEnd.h"
#include "support/InstallCheckFixture.h"
#include "utils/Exception.h"
#include "utils/UUIDString.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <set>

namespace quillmark {
namespace {

using test::Lines;
using test::linesFrom;
using test::together;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr std::int32_t kSucceeded = UpdateToolManager::kSucceeded;
constexpr std::int32_t kRunFailed = UpdateToolManager::kRunFailed;
constexpr std::int32_t kCommandBegun = UpdateToolManager::kCommandBegun;

const std::string a = "/a b/é.pkg";
const std::string b = "b.sig";
const std::string c = "/c";

/// The update tool as fakes run it.
class UpdateTool : public test::LogFixture {
protected:
    UpdateTool() {
        _setStandardStreams(nullptr, nullptr);
        endWith(0);
    }

    /// From now on, the tools' runs end with that status.
    void endWith(int status) { platform.tasks.usualStatus = status; }
    /// A command's result, and the status that it leaves.
    using Outcome = std::pair<std::int32_t, std::int32_t>;
    Outcome outcomeOf(const std::function<std::int32_t(UpdateToolManager &)> &command) {
        const std::int32_t result = command(manager);
        return {result, manager.status()};
    }
    Lines log() const { return withTilde(linesOf(m_log)); }
    Lines calls() const { return withTilde(platform.transcript.calls()); }

    const std::string m_macFuseLog = home.path("install.log");
    UpdateToolManager manager{std::string(kToolPath), m_macFuseLog};

private:
    const std::string m_log = logToFile(kLogLevelDetailed);
};

struct Command {
    const char *name;
    std::function<std::int32_t(UpdateToolManager &)> call;
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

const std::string kTool = "/Library/Application Support/Quillmark/updateqm";

class UpdateToolCommands : public UpdateTool, public testing::WithParamInterface<Command> {
protected:
    std::string wantedRun() const { return "run " + kTool + ' ' + GetParam().arguments; }
};

TEST_P(UpdateToolCommands, RunTheInstalledToolAndWait) {
    EXPECT_EQ(manager.status(), UpdateToolManager::kNothingDone);
    EXPECT_EQ(outcomeOf(GetParam().call), Outcome(kSucceeded, kSucceeded));
    EXPECT_EQ(calls().front(), wantedRun());
    EXPECT_THAT(calls(), Contains(HasSubstr("run ")).Times(1));
}

TEST_P(UpdateToolCommands, ThatFailReturnFourAndLeaveFive) {
    endWith(1);
    EXPECT_EQ(outcomeOf(GetParam().call),
              Outcome(kRunFailed, kCommandBegun)); // deliberate: the status is that of the begun command
    EXPECT_EQ(calls(), Lines{wantedRun()});
}

TEST_P(UpdateToolCommands, ThatCannotBeStartedFailToo) {
    platform.tasks.canStart = false;
    EXPECT_EQ(outcomeOf(GetParam().call), Outcome(kRunFailed, kCommandBegun));
}

TEST_P(UpdateToolCommands, BeginAnewAfterASuccess) {
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
    EXPECT_EQ(manager.runExe("/t", {"x", a}, true), kSucceeded);
    EXPECT_EQ(calls(), Lines{"run /t x /a b/é.pkg"});
    EXPECT_EQ(log(), (Lines{"vrb UpdateToolManager:runExe: Running \"/t\"...",
                            "vrb UpdateToolManager:runExe: Succeeded running \"/t\""}));
    EXPECT_EQ(manager.status(), UpdateToolManager::kNothingDone);
}

TEST_F(UpdateToolRun, OfAnyOtherStatusFails) {
    for (const int status : {1, 3, 127, 128 + 9}) {
        endWith(status);
        EXPECT_EQ(manager.runExe("/t", {a}, true), kRunFailed);
        EXPECT_EQ(linesFrom(log(), log().size() - 2), (Lines{"vrb UpdateToolManager:runExe: Running \"/t\"...",
                                                             "ERR UpdateToolManager:runExe: Failed running \"/t\""}));
    }
}

TEST_F(UpdateToolRun, ThatRaisesIsLoggedWithItsExceptionAndFails) {
    platform.tasks.canStart = false;
    EXPECT_EQ(manager.runExe("/t", {a}, true), kRunFailed);
    const Lines lines{"vrb UpdateToolManager:runExe: Running \"/t\"...",
                      "ERR UpdateToolManager:runExe: Exception during running \"/t\" "
                      "(NSInvalidArgumentException (launch path not accessible))",
                      "ERR UpdateToolManager:runExe: Failed running \"/t\""};
    EXPECT_EQ(log(), lines);
    EXPECT_EQ(manager.runExe("/t", {a}, false), kRunFailed);
    EXPECT_EQ(log(), together({lines, lines}));
}

TEST_F(UpdateToolRun, ThatIsNotWaitedForCountsAsFailed) { // deliberate, unlike one of the overlay tool
    EXPECT_EQ(manager.runUpdateTool({"repaircore", a}, false), kRunFailed);
    EXPECT_EQ(calls(), Lines{"start " + kTool + " repaircore /a b/é.pkg"});
    EXPECT_EQ(log(), (Lines{"vrb UpdateToolManager:runExe: Running \"" + kTool + "\"...",
                            "ERR UpdateToolManager:runExe: Failed running \"" + kTool + '"'}));
    EXPECT_EQ(manager.status(), UpdateToolManager::kNothingDone);
}

TEST_F(UpdateToolRun, OfARealProgramEndsWithItsStatus) {
    const Platform real = platform.platform.with(nativePlatform().tasks);
    installPlatform(&real);
    const AtEnd replaced([this] { installPlatform(&platform.platform); });
    UpdateToolManager runner("/bin/%@");
    const auto shell = [&runner](const char *script) { return runner.runExe("/bin/sh", {"-c", script}, true); };
    EXPECT_EQ(shell("exit 0"), kSucceeded);
    EXPECT_EQ(shell("exit 1"), kRunFailed);
    EXPECT_EQ(shell("kill -KILL $$"), kRunFailed);
    EXPECT_EQ(runner.runExe(home.path("none"), {}, true), kRunFailed);
}

class OverlayTool : public UpdateTool {
protected:
    const std::string m_tool = "/Library/Application Support/Quillmark/finderoverlaytool";
    const std::string m_running = "vrb Running FinderOverlayTool \"" + m_tool + "\"...";
    const std::string m_succeeded = "vrb FinderOverlayTool \"" + m_tool + "\" did succeed";
};

TEST_F(OverlayTool, IsRunToInsertTheOverlay) {
    EXPECT_EQ(outcomeOf(&Manager::insertFinderOverlayBundle), Outcome(kSucceeded, kSucceeded));
    EXPECT_EQ(calls(), Lines{"run /Library/Application Support/Quillmark/finderoverlaytool insertfinderoverlay"});
    EXPECT_EQ(log(), (Lines{m_running, m_succeeded}));
}

TEST_F(OverlayTool, ThatFailsReturnsFourAndLeavesFive) {
    endWith(2);
    EXPECT_EQ(outcomeOf(&Manager::insertFinderOverlayBundle), Outcome(kRunFailed, kCommandBegun));
    EXPECT_EQ(log(), (Lines{m_running, "vrb FinderOverlayTool \"" + m_tool + "\" did fail"}));
}

TEST_F(OverlayTool, ThatIsNotWaitedForCountsAsSucceeded) { // deliberate, unlike a run of the update tool
    endWith(1);
    EXPECT_EQ(manager.runFinderOverlayTool({a}, false), kSucceeded);
    EXPECT_EQ(calls(), Lines{"start /Library/Application Support/Quillmark/finderoverlaytool /a b/é.pkg"});
    EXPECT_EQ(log(), (Lines{m_running, m_succeeded}));
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
    std::function<std::int32_t(UpdateToolManager &)> call;
    const char *operation;
    const char *program; ///< with its arguments
    Lines before;        ///< log lines
    Lines behindRights;
};

void PrintTo(const AdminRun &run, std::ostream *stream) { *stream << run.name; }

class UpdateToolAsAdmin : public UpdateTool, public testing::WithParamInterface<AdminRun> {
protected:
    std::string line(const char *level, const char *text) const {
        return std::string(level) + " UpdateToolManager:" + GetParam().operation + ": " + text;
    }
    Lines starting() const { return together({GetParam().before, {line("nrm", "Starting...")}}); }
    std::string execution() const { return std::string("AuthorizationExecuteWithPrivileges ") + GetParam().program; }
    static inline const Lines kAsked{"AuthorizationCreate", "AuthorizationCopyRights system.privilege.admin 13"};
    static inline const Lines kFreed{"AuthorizationFree"};
};

TEST_P(UpdateToolAsAdmin, AsksForTheRightAndStartsTheTool) {
    EXPECT_EQ(outcomeOf(GetParam().call), Outcome(kSucceeded, kSucceeded));
    EXPECT_EQ(calls(), together({kAsked, {execution()}, kFreed}));
    EXPECT_EQ(log(), together({starting(), GetParam().behindRights, {line("nrm", "Succeeded")}}));
}

TEST_P(UpdateToolAsAdmin, WithoutAnyAuthorizationReturnsFourWithoutAWord) {
    platform.authorization.createStatus = -60008;
    EXPECT_EQ(outcomeOf(GetParam().call), Outcome(kRunFailed, kCommandBegun));
    EXPECT_EQ(calls(), Lines{"AuthorizationCreate"});
    EXPECT_EQ(log(), starting());
}

TEST_P(UpdateToolAsAdmin, ThatTheUserRefusesReturnsFourAndLeavesTheStatus) {
    for (const auto &[status, text] : {std::pair(-60006, "AuthorizationCopyRights failed (OSStatus -60006)"),
                                       {-60005, "AuthorizationCopyRights failed (OSStatus -60005)"}}) {
        platform.transcript.clear();
        platform.authorization.rightsStatus = status;
        EXPECT_EQ(outcomeOf(GetParam().call), Outcome(kRunFailed, kCommandBegun));
        EXPECT_EQ(calls(), together({kAsked, kFreed}));
        const Lines wanted = together({starting(), {line("ERR", text)}});
        EXPECT_EQ(linesFrom(log(), log().size() - wanted.size()), wanted);
    }
}

TEST_P(UpdateToolAsAdmin, ThatCannotBeStartedReturnsFourAndLeavesFour) {
    platform.authorization.executeStatus = -60031;
    EXPECT_EQ(outcomeOf(GetParam().call), Outcome(kRunFailed, kRunFailed));
    EXPECT_EQ(calls(), together({kAsked, {execution()}, kFreed}));
    EXPECT_EQ(log(), together({starting(),
                               GetParam().behindRights,
                               {line("ERR", "AuthorizationExecuteWithPrivileges failed (OSStatus -60031)")}}));
}

const AdminRun kAdminRuns[] = {
    {"repairPermissions",
     [](Manager &m) { return m.repairPermissions(); },
     "runUpdateToolAsAdmin",
     "/Library/Application Support/Quillmark/updateqm repairpermissions",
     {},
     {}},
    {"repairUpdateTool",
     [](Manager &m) { return m.repairUpdateTool("/App/updateqm", a); },
     "runUninstalledUpdateToolAsAdmin",
     "/App/updateqm repair /a b/é.pkg", // the tool's own path is not an argument
     {"dtl updateQMSignaturePath is /a b/é.pkg"},
     {"dtl Running /App/updateqm"}},
};
INSTANTIATE_TEST_SUITE_P(Run, UpdateToolAsAdmin, testing::ValuesIn(kAdminRuns),
                         [](const auto &suite) { return std::string(suite.param.name); });

TEST_F(UpdateTool, WithoutACommandTheAdministratorsRunAloneDecidesTheStatus) {
    platform.authorization.rightsStatus = -60006;
    EXPECT_EQ(manager.runUpdateToolAsAdmin({"x"}), kRunFailed);
    EXPECT_EQ(manager.runUninstalledUpdateToolAsAdmin(c, {"x"}), kRunFailed);
    EXPECT_EQ(manager.status(), UpdateToolManager::kNothingDone);
    platform.authorization.rightsStatus = 0;
    EXPECT_EQ(manager.runUninstalledUpdateToolAsAdmin(c, {"x", "y"}), kSucceeded);
    EXPECT_EQ(manager.status(), kSucceeded);
    EXPECT_THAT(calls(), Contains("AuthorizationExecuteWithPrivileges /c x y"));
}

/// The installation log that is kept after a package of MacFUSE.
class MacFuseLog : public UpdateTool {
protected:
    std::string m_kept = home.path("Library/Logs/Quillmark/MacFUSE/macfuse-install.log");
    const std::string m_both = "\"~/install.log\" to \"~/Library/Logs/Quillmark/MacFUSE/macfuse-install.log\"";

    void leaveLog() { home.write("install.log", "installed\n"); }
    /// The log's lines about the installation log.
    Lines keeping() const { return linesFrom(log(), 2); }
    Outcome install(const char *package = "MacFUSE.pkg") {
        return outcomeOf([package](Manager &m) { return m.repairFrameworkUsingPackage(package); });
    }
};

TEST_F(MacFuseLog, IsCopiedAmongTheProductsOwn) {
    leaveLog();
    EXPECT_EQ(install(), Outcome(kSucceeded, kSucceeded));
    EXPECT_EQ(test::readAll(m_kept), "installed\n");
    EXPECT_EQ(keeping(), (Lines{"vrb \"~/Library/Logs/Quillmark/MacFUSE\" subfolder missing - created it",
                                "vrb Copying " + m_both + "...", "vrb Copied " + m_both + " - MacFUSE log available"}));
}

TEST_F(MacFuseLog, IsKeptWhateverTheLetterCaseOfThePackage) {
    leaveLog();
    EXPECT_EQ(install("/x/macfuse-2.pkg"), Outcome(kSucceeded, kSucceeded));
    EXPECT_TRUE(std::filesystem::exists(m_kept));
}

TEST_F(MacFuseLog, IsOfNoInterestAfterAnotherPackageOrABundle) {
    leaveLog();
    EXPECT_EQ(manager.repairFrameworkUsingPackage(a), kSucceeded);
    EXPECT_EQ(manager.repairBundleUsingPackage("MacFUSE.pkg"), kSucceeded);
    EXPECT_FALSE(std::filesystem::exists(m_kept));
    EXPECT_EQ(log().size(), 4U); // two runs
}

TEST_F(MacFuseLog, IsKeptAfterAFailedInstallationTooWhichStaysFailed) {
    endWith(1);
    leaveLog();
    EXPECT_EQ(install(), Outcome(kRunFailed, kCommandBegun));
    EXPECT_TRUE(std::filesystem::exists(m_kept));
}

TEST_F(MacFuseLog, ThatIsMissingIsNoted) {
    EXPECT_EQ(install(), Outcome(kSucceeded, kSucceeded));
    EXPECT_EQ(keeping(), Lines{"vrb \"~/install.log\" doesn't exists - no MacFUSE log will be available"});
    EXPECT_FALSE(std::filesystem::exists(home.path("Library")));
}

TEST_F(MacFuseLog, IsNotTakenFromALinkThatAnybodyMayHavePutThere) {
    home.write("secret", "secret");
    std::filesystem::create_symlink(home.path("secret"), home.path("install.log"));
    EXPECT_EQ(install(), Outcome(kSucceeded, kSucceeded));
    EXPECT_FALSE(std::filesystem::exists(m_kept));
    EXPECT_TRUE(keeping().back().starts_with("ERR Failed to copy \"~/install.log\" to "));
    EXPECT_THAT(keeping().back(), HasSubstr("It is not a trusted user's file"));
}

TEST_F(MacFuseLog, DoesNotReplaceAnEarlierOne) {
    leaveLog();
    home.write("Library/Logs/Quillmark/MacFUSE/macfuse-install.log", "earlier");
    platform.systemInfo.errorTexts.insert_or_assign(EEXIST, "File exists");
    EXPECT_EQ(install(), Outcome(kSucceeded, kSucceeded));
    EXPECT_EQ(test::readAll(m_kept), "earlier");
    EXPECT_EQ(keeping(),
              (Lines{"vrb Copying " + m_both + "...",
                     "ERR Failed to copy " + m_both +
                         " (\"Copying stopped at '~/Library/Logs/Quillmark/MacFUSE/macfuse-install.log'\" because "
                         "\"Posix error 17 (File exists)\")"}));
}

TEST_F(MacFuseLog, WhoseFolderCannotBeMadeIsAnExceptionThatGoesNoFurther) {
    leaveLog();
    home.write("Library/Logs", "in the way");
    platform.systemInfo.errorTexts.insert_or_assign(ENOTDIR, "Not a directory");
    EXPECT_EQ(install(), Outcome(kSucceeded, kSucceeded));
    EXPECT_EQ(keeping(), Lines{"ERR NSGenericException (Failed to create \"~/Library/Logs/Quillmark/MacFUSE\" "
                               "(Not a directory))"});
}

TEST_F(MacFuseLog, IsKeptBeforeTheCommandCountsAsDone) {
    leaveLog();
    std::set<std::int32_t> statuses;
    platform.clock.onNow = [&] { statuses.insert(manager.status()); }; // each line of the log asks for the time
    install();
    platform.clock.onNow = {};
    EXPECT_EQ(statuses, std::set<std::int32_t>{kCommandBegun});
    EXPECT_EQ(manager.status(), kSucceeded);
}

TEST_F(MacFuseLog, IsLookedForInTheTemporaryFolder) {
    UpdateToolManager().repairFrameworkUsingPackage("MacFUSE.pkg");
    // Whether there is one or not.
    EXPECT_THAT(keeping().at(0), HasSubstr("\"/tmp/.macfuse-install.log\""));
}

/// The Finder, which has loaded the old tool and is restarted.
class FinderRestart : public UpdateTool {
protected:
    void run() { platform.workspace.addApplication("com.apple.finder", 5); }
    Outcome repair() {
        return outcomeOf([](Manager &m) { return m.repairQMToolRoot(a, b); });
    }
    /// The log's lines behind those of the tool.
    Lines behindTheRun() const { return linesFrom(log(), 2); }
    static Lines launching() {
        return {"vrb Launching \"/System/Library/CoreServices/Finder.app\"...",
                "vrb Launched \"/System/Library/CoreServices/Finder.app\""};
    }
    static inline const std::string kLaunch = "launchApplication /System/Library/CoreServices/Finder.app";
};

TEST_F(FinderRestart, IsALaunchAloneWhenItDoesNotRun) {
    EXPECT_EQ(repair(), Outcome(kSucceeded, kSucceeded));
    EXPECT_EQ(linesFrom(calls(), 1), (Lines{"launchedApplications", kLaunch}));
    EXPECT_EQ(behindTheRun(),
              together({{"vrb Not requesting app with id \"com.apple.finder\" to quit because it isn't running"},
                        launching()}));
}

TEST_F(FinderRestart, QuitsItFirst) {
    run();
    platform.appleEvents.onSend = [this] { platform.workspace.applications.clear(); };
    EXPECT_EQ(repair(), Outcome(kSucceeded, kSucceeded));
    EXPECT_EQ(linesFrom(calls(), 1), (Lines{"launchedApplications", "buildQuitEvent com.apple.finder", "sendMessage",
                                            "launchedApplications", kLaunch}));
    EXPECT_EQ(behindTheRun(), together({{"vrb Requesting app with id \"com.apple.finder\" to quit...",
                                         "vrb Requested app with id \"com.apple.finder\" to quit",
                                         "vrb App with id \"com.apple.finder\" did quit"},
                                        launching()}));
}

TEST_F(FinderRestart, WaitsForFourSecondsAndGoesOn) {
    run();
    EXPECT_EQ(repair(), Outcome(kSucceeded, kSucceeded));
    EXPECT_EQ(platform.clock.sleeps().size(), 6U);
    EXPECT_EQ(calls().back(), kLaunch);
    EXPECT_EQ(linesFrom(log(), log().size() - 3),
              together({{"vrb Didn't see Finder restart - continue anyway"}, launching()}));
    EXPECT_THAT(behindTheRun(), Not(Contains(HasSubstr("ERR"))));
}

TEST_F(FinderRestart, ThatCannotBeAskedToQuitIsAnErrorAndNothingIsLaunched) {
    run();
    platform.appleEvents.sendStatus = -600;
    EXPECT_EQ(repair(), Outcome(kCommandBegun, kCommandBegun));
    EXPECT_THAT(calls(), Not(Contains(kLaunch)));
    EXPECT_EQ(log().back(), "ERR repairQMToolRoot failed (\"quitApplication failed\" because \"Request to quit app "
                            "wth id \"com.apple.finder\" failed (AESendMessage failed with error -600)\")");
}

TEST_F(FinderRestart, ThatCannotBeLaunchedIsAnErrorAndYetLoggedAsLaunched) {
    platform.transcript.failAt("launchApplication", 1);
    EXPECT_EQ(repair(), Outcome(kCommandBegun, kCommandBegun));
    const Lines lines = linesFrom(behindTheRun(), 1); // deliberate: "Launched" comes in any case
    EXPECT_EQ(lines, together({launching(),
                               {"ERR repairQMToolRoot failed (\"launchApplication failed\" because "
                                "\"launchApplication \"/System/Library/CoreServices/Finder.app\" failed\")"}}));
}

TEST_F(FinderRestart, DoesNotFollowAFailedRepair) {
    endWith(1);
    run();
    EXPECT_EQ(repair(), Outcome(kRunFailed, kCommandBegun));
    EXPECT_EQ(calls().size(), 1U);
}

/// The look at an installed tool.
class InstalledTool : public test::InstallCheckFixture {
protected:
    std::int32_t verified(const std::string &name) {
        const std::int32_t result = updateTool.verifyUpdateTool(name);
        EXPECT_EQ(updateTool.status(), result);
        return result;
    }
    UpdateToolManager own{home.path("%@")};
};

TEST_F(InstalledTool, OfTheAdministratorWithTheSetUserIdBitIsInOrder) {
    EXPECT_EQ(verified("passwd"), UpdateToolManager::kSucceeded);
}

TEST_F(InstalledTool, WithoutTheSetUserIdBitHasWrongPermissions) {
    EXPECT_EQ(verified("env"), UpdateToolManager::kToolHasWrongPermissions);
}

TEST_F(InstalledTool, ThatIsNotThereIsMissing) { EXPECT_EQ(verified("no such tool"), UpdateToolManager::kToolMissing); }

TEST_F(InstalledTool, OfSomebodyElseHasWrongPermissionsWhateverItsMode) {
    installTool("tool", "", 04755);
    EXPECT_EQ(own.verifyUpdateTool("tool"), UpdateToolManager::kToolHasWrongPermissions);
}

TEST_F(InstalledTool, ThatIsALinkHasWrongPermissions) {
    std::filesystem::create_symlink(kSetUserIdTool, home.path("link"));
    EXPECT_EQ(own.verifyUpdateTool("link"), UpdateToolManager::kToolHasWrongPermissions);
}

TEST_F(InstalledTool, ThatIsADanglingLinkIsMissing) {
    std::filesystem::create_symlink(home.path("gone"), home.path("link"));
    EXPECT_EQ(own.verifyUpdateTool("link"), UpdateToolManager::kToolMissing);
    EXPECT_EQ(own.status(), UpdateToolManager::kToolMissing);
}

TEST_F(InstalledTool, IsLookedForInTheProductsFolder) {
    UpdateToolManager manager;
    EXPECT_EQ(manager.verifyUpdateTool(UUIDString()), UpdateToolManager::kToolMissing);
    EXPECT_EQ(manager.verifyUpdateTool("../../../usr/bin/env"), UpdateToolManager::kToolMissing);
}

} // namespace
} // namespace quillmark
