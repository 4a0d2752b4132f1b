#include "launcher/Quillmark_LauncherAppDelegate.h"
#include "desktop/MoveOffer.h"
#include "support/InstallCheckFixture.h"
#include "utils/Exception.h"
#include "utils/ProductVersion.h"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <thread>

namespace quillmark {
namespace {

using test::Lines;
using test::linesFrom;
using test::together;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

/// Of the first one that begins like that; there has to be one.
size_t indexOf(const Lines &lines, const std::string &beginning) {
    const auto found = std::ranges::find_if(lines, [&](const auto &line) { return line.starts_with(beginning); });
    EXPECT_NE(found, lines.end()) << beginning;
    return static_cast<size_t>(found - lines.begin());
}

class LauncherAppDelegate : public test::InstallCheckFixture {
protected:
    LauncherAppDelegate() {
        gAlsoRemoveBundlePaths.clear();
        platform.bundle.bundlePath = home.path("Applications/Quillmark.app");
        resource("Config.plist", "config", {{"Brand", 15}});
        resource("Defaults.plist", "defaults", {{"FileLogging", "normal"}, {"StdioLogging", "error"}});
        resource("RequiredItems.plist", "catalogue", {{"RequiredItems", List()}});
        platform.bundle.resources.emplace_back("QuillmarkCore.app");
    }
    void resource(const std::string &name, const std::string &document, const Dictionary &values) {
        platform.bundle.resources.push_back(name);
        home.write("Applications/Quillmark.app/Contents/Resources/" + name, document);
        platform.propertyList.documents[document] = values;
    }
    /// Puts the bundle into a download folder, and an old copy of it where a move leads.
    void leaveApplications() {
        std::filesystem::rename(home.path("Applications"), home.path("Downloads"));
        platform.bundle.bundlePath = home.path("Downloads/Quillmark.app");
        platform.workspace.localFolders = {home.makeFolder("computer")};
        platform.workspace.ownFolder = home.path();
        home.write("computer/Quillmark.app/old", "old");
    }
    void setItems(const List &items) {
        platform.propertyList.documents["catalogue"] = Dictionary{{"RequiredItems", items}};
    }
    /// A tool in order: the administrator's, with mode 0755, and as new as this application.
    RequiredItem toolInOrder() {
        platform.tasks.outputs[kAdministratorsTool] = "Limited 1.14.0.0";
        return itemOf("QMTool", "env", kAdministratorsTool);
    }
    /// Runs the start-up to the point where the process would end.
    void start() { EXPECT_THROW(delegate().applicationDidFinishLaunching(), test::Terminated); }
    Quillmark_LauncherAppDelegate &delegate() {
        if (!m_delegate) {
            m_strings.emplace(platform.bundle);
            m_delegate.emplace(*m_strings, [this]() -> InstallCheckManager & { return manager(); });
        }
        return *m_delegate;
    }
    const Lines &calls() const { return platform.transcript.calls(); }
    static Lines messages() { return messagesOf(getLogFilePath().value()); }
    /// The questions to the process table.
    static Lines pipelines() {
        const std::string run = "run /bin/sh -c ";
        return {run + kFirstPipeline, run + "ps ax -o comm | grep 'Quillmark Mac' | grep -v grep >/dev/null",
                run + "ps ax -o comm | grep 'QuillmarkCore' | grep -v grep >/dev/null"};
    }
    /// The search for stale copies, and the thought of a move.
    static Lines looksAround() {
        return {"applicationsFolders user", "applicationsFolders local",
                "objectForKey moveToApplicationsFolderAlertSuppress", "applicationsFolders all"};
    }
    static inline const std::string kFirstPipeline =
        "ps ax -o comm | fgrep 'QuillmarkCore' | grep -v grep | grep -v relaunchqm > /dev/null";
    std::string core() const {
        return platform.bundle.resourcePath() + "/QuillmarkCore.app/Contents/MacOS/QuillmarkCore";
    }

private:
    std::optional<LocalizedStrings> m_strings;
    std::optional<Quillmark_LauncherAppDelegate> m_delegate;
};

TEST_F(LauncherAppDelegate, TheStepsComeStrictlyInOrder) {
    start();
    EXPECT_EQ(calls(), together({{"registerDefaults FileLogging,StdioLogging", "objectForKey FileLogging",
                                  "objectForKey StdioLogging"},
                                 pipelines(),
                                 looksAround(),
                                 {"launchApplication " + core(), "terminate"}}));
}

TEST_F(LauncherAppDelegate, TheLogTellsTheSteps) {
    start();
    EXPECT_EQ(getLogFilePath().value(), home.path("Library/Logs/Quillmark/Quillmark/Quillmark-2024-03-05-141502.log"));
    EXPECT_EQ(messages(),
              (Lines{"Quillmark version " + versionOfThisAppAsString(true), "Quillmark did begin launching...",
                     "Quillmark did finish launching", "Launching \"" + core() + "\"...", "Launched \"" + core() + '"',
                     "Will terminate now"}));
    EXPECT_THAT(contentsOf(getLogFilePath().value()), Not(HasSubstr("(ERR)")));
}

TEST_F(LauncherAppDelegate, TheLogTellsOfTheSearchForOlderCopiesBeforeItBegins) {
    platform.userDefaults.stored["FileLogging"] = "verbose";
    std::string log; // as it lies on the disk
    platform.workspace.onApplicationsFolders = [&log] { log = test::readAll(getLogFilePath().value()); };
    start();
    EXPECT_TRUE(log.ends_with("Looking for older copies of the client...\n"));
}

TEST_F(LauncherAppDelegate, BesideARunningCoreThereIsAnAlertAndTheEndAndNothingElse) {
    platform.bundle.strings.insert({{"QuillmarkLauncher_AlreadyRunning", "It runs."},
                                    {"QuillmarkLauncher_YouMustQuit", "Quit it first."},
                                    {"Quit", "Leave"}});
    platform.tasks.statuses[kFirstPipeline] = 0;
    start();
    EXPECT_EQ(linesFrom(calls(), 3),
              together({pipelines(), {"runModal [Quillmark] It runs. | Quit it first. | Leave", "terminate"}}));
    EXPECT_EQ(linesFrom(messages(), 2), (Lines{"Letting other copy run, we will terminate", "User did quit"}));
    EXPECT_TRUE(gAlsoRemoveBundlePaths.empty());
}

TEST_F(LauncherAppDelegate, AMoveComesBehindTheStaleCopiesAndIsTheEnd) {
    leaveApplications();
    setItems({itemOf("QMTool", "gone", "/none")});
    platform.alerts.answers = {{0, false}};
    start();
    Lines all = calls();
    std::erase_if(all, [](const std::string &call) { return call.starts_with("objectFor"); });
    const size_t offer = indexOf(all, "runModal [Quillmark] Move to Applications folder");
    EXPECT_EQ(linesFrom(all, offer - 5, 5),
              (Lines{"applicationsFolders user", "applicationsFolders local", "applicationsFolders all",
                     "applicationsFolders local", "downloadsFolders"}));
    EXPECT_TRUE(all.at(offer + 1).starts_with("recycle Quillmark.app in "));
    EXPECT_TRUE(all.at(offer + 3).starts_with("start /bin/sh -c "));
    EXPECT_EQ(linesFrom(all, offer + 5), Lines{"terminate"});
    EXPECT_EQ(messages().back(), "Moving myself to the Applications folder");
}

TEST_F(LauncherAppDelegate, AMoveThatIsNotWantedIsFollowedByTheRestOfTheStart) {
    leaveApplications();
    start();
    EXPECT_THAT(calls(), Contains(HasSubstr("runModal")).Times(1));
    EXPECT_EQ(linesFrom(calls(), calls().size() - 2), (Lines{"launchApplication " + core(), "terminate"}));
    EXPECT_THAT(messages(), Contains("Quillmark did finish launching"));
}

TEST_F(LauncherAppDelegate, AMoveThatIsNotWantedMayBeFollowedByFaultyComponents) {
    leaveApplications();
    setItems({itemOf("QMTool", "gone", "/none")});
    platform.bundle.resources.emplace_back("InstallCheck.ui");
    EXPECT_TRUE(delegate().applicationDidFinishLaunching());
    EXPECT_LT(indexOf(calls(), "runModal "), indexOf(calls(), "bringToFront"));
    EXPECT_THAT(calls(), Not(Contains("terminate")));
}

TEST_F(LauncherAppDelegate, ComponentsInOrderAreExaminedLastOfAllBeforeTheLaunch) {
    setItems({toolInOrder(), itemOf("Framework", "Mono", "/none")});
    platform.userDefaults.stored["FileLogging"] = "verbose";
    start();
    EXPECT_EQ(linesFrom(calls(), 6),
              together({looksAround(), {"launch /usr/bin/env ", "launchApplication " + core(), "terminate"}}));
    const Lines lines = linesOf(getLogFilePath().value());
    EXPECT_EQ(
        linesFrom(lines, indexOf(lines, "nrm Quillmark did finish launching")),
        (Lines{"nrm Quillmark did finish launching", "vrb \"/usr/bin/env\" does not need to update from 1.14.0.0",
               "vrb Install check: QMTool \"env\" is \"OK\"", "vrb Install check: Framework \"Mono\" is \"OK\"",
               "nrm Launching \"" + core() + "\"...", "nrm Launched \"" + core() + '"', "nrm Will terminate now"}));
}

TEST_F(LauncherAppDelegate, FaultyComponentsAreLoggedAsErrorsAndNothingIsLaunched) {
    platform.bundle.strings["Missing"] = "fehlt";
    resource("logo-1.bmp", "logo", {});
    platform.images.pictures[platform.bundle.resourcePath() + "/logo-1.bmp"] = Image{{}, 1, 1, "abcd"};
    RequiredItem notRequired = itemOf("FinderOverlayInsert", "later", "/none");
    notRequired.insert_or_assign(kMinMacOSXVersion, "10.6");
    const std::string old = home.write("old.plugin", "");
    setItems({itemOf("QMTool", "gone", "/none"), toolInOrder(), notRequired, itemOf("FinderCM", "old", old),
              itemOf("Bundle", "fs", "/none.fs")});
    EXPECT_TRUE(delegate().applicationDidFinishLaunching()); // comes back, and the window is up
    EXPECT_EQ(calls().back(), "bringToFront");
    EXPECT_EQ(linesFrom(calls(), indexOf(calls(), "applicationsFolders user"), 5),
              together({looksAround(), {"launch /usr/bin/env "}}));
    EXPECT_EQ(linesFrom(linesOf(getLogFilePath().value()), 2),
              (Lines{"nrm Quillmark did finish launching", "ERR \"gone\" is not in order: fehlt (\"/none\")",
                     "ERR \"old\" is not in order: Old Version (\"" + old + "\")",
                     "ERR \"fs\" is not in order: fehlt (\"/none.fs\")"}));
}

TEST_F(LauncherAppDelegate, WithoutAWindowFaultyComponentsAreToldInAnAlertAndAreTheEnd) {
    platform.checkWindows.canBeShown = false;
    setItems({itemOf("QMTool", "gone", "/none"), toolInOrder(), itemOf("Bundle", "fs", "/none.fs")});
    EXPECT_FALSE(delegate().applicationDidFinishLaunching());
    EXPECT_EQ(calls().back(), "runModal [Quillmark] RunFailedTitle | gone (Missing)\nfs (Missing) | Quit");
}

TEST_F(LauncherAppDelegate, ACatalogueThatCannotBeReadIsReportedAndTheCoreIsLaunched) {
    std::erase(platform.bundle.resources, "RequiredItems.plist");
    start();
    EXPECT_EQ(linesOf(getLogFilePath().value())[3],
              "ERR The catalogue of required items (\"" + platform.bundle.resourcePath() +
                  "/RequiredItems.plist\") can't be read: no component is checked");
    EXPECT_EQ(calls().back(), "terminate");
}

TEST_F(LauncherAppDelegate, TheWindowForAMissingComponentIsLoadedWhileTheProcessTableIsAsked) {
    setItems({itemOf("QMTool", "gone", "/none")});
    platform.bundle.resources.emplace_back("InstallCheck.ui");
    std::thread::id asker;
    platform.tasks.onRun = [&asker] { asker = std::this_thread::get_id(); };
    EXPECT_TRUE(delegate().applicationDidFinishLaunching());
    EXPECT_NE(asker, std::this_thread::get_id());
    const size_t next = indexOf(calls(), "applicationsFolders user");
    EXPECT_EQ(calls()[3], "prepare");
    EXPECT_LT(indexOf(calls(), "load InstallCheck.ui"), next);
    for (const std::string &pipeline : pipelines()) {
        EXPECT_LT(indexOf(calls(), pipeline), next);
    }
}

TEST_F(LauncherAppDelegate, WhenNothingIsMissingTheProcessTableIsAskedOnTheMainThread) {
    std::thread::id asker;
    platform.tasks.onRun = [&asker] { asker = std::this_thread::get_id(); };
    start();
    EXPECT_EQ(asker, std::this_thread::get_id());
    EXPECT_THAT(calls(), Not(Contains("prepare")));
}

TEST_F(LauncherAppDelegate, WhatTheQuestionBesideTheLoadingRaisesIsLetThrough) {
    setItems({itemOf("QMTool", "gone", "/none")});
    platform.bundle.resources.emplace_back("InstallCheck.ui");
    platform.tasks.onRun = [] { throw Exception("Question", "nobody answers"); };
    EXPECT_THROW(delegate().applicationDidFinishLaunching(), Exception);
    EXPECT_THAT(calls(), Contains("load InstallCheck.ui"));
}

TEST_F(LauncherAppDelegate, BesideARunningCoreNoComponentIsExaminedAndNoWindowComesUp) {
    setItems({toolInOrder(), itemOf("QMTool", "gone", "/none")});
    platform.tasks.statuses[kFirstPipeline] = 0;
    start();
    EXPECT_THAT(calls(), Not(Contains("launch /usr/bin/env ")));
    EXPECT_THAT(calls(), Not(Contains("bringToFront")));
}

TEST_F(LauncherAppDelegate, EveryNameFollowsTheLocalisedProductName) {
    platform.bundle.strings["ProductName"] = "Feder";
    platform.bundle.resources.emplace_back("FederCore.app");
    start();
    EXPECT_THAT(calls(), Contains("launchApplication " + platform.bundle.resourcePath() +
                                  "/FederCore.app/Contents/MacOS/FederCore"));
    EXPECT_THAT(gAlsoRemoveBundlePaths, Contains("/Applications/Feder Client-3.app"));
    EXPECT_EQ(gAltDstBundleName, "Feder");
    EXPECT_THAT(getLogFilePath().value(), HasSubstr("/Library/Logs/Feder/Feder/Feder-"));
}

TEST_F(LauncherAppDelegate, TheStaleCopiesAreListed) {
    start();
    EXPECT_EQ(gAlsoRemoveBundlePaths.size(), 24U);
}

TEST_F(LauncherAppDelegate, TheBrandIsTheConfigurationsNumber) {
    EXPECT_EQ(delegate().brandId(), 0);
    start();
    EXPECT_EQ(delegate().brandId(), 15);
}

TEST_F(LauncherAppDelegate, ABrandGivenAsTextIsReadAsANumber) {
    platform.propertyList.documents["config"] = Dictionary{{"Brand", "10001 x"}};
    start();
    EXPECT_EQ(delegate().brandId(), 10001);
}

TEST_F(LauncherAppDelegate, AMissingConfigurationMeansBrandZeroAndTheStartGoesOn) {
    std::erase(platform.bundle.resources, "Config.plist");
    start();
    EXPECT_EQ(delegate().brandId(), 0);
}

TEST_F(LauncherAppDelegate, StoredSettingsWinOverTheDefaults) {
    platform.userDefaults.stored["FileLogging"] = "detailed";
    start();
    EXPECT_EQ(_fileLoggingLevel, kLogLevelDetailed);
    EXPECT_EQ(_stdioLoggingLevel, kLogLevelError);
}

TEST_F(LauncherAppDelegate, AFailedLaunchIsNotNoticed) {
    platform.transcript.failAt("launchApplication", 1);
    start(); // deliberate: the launcher says that it launched, and ends
    EXPECT_EQ(messages().back(), "Will terminate now");
}

TEST_F(LauncherAppDelegate, AMissingCoreIsNotNoticedEither) {
    std::erase(platform.bundle.resources, "QuillmarkCore.app");
    start();
    EXPECT_THAT(messages(), Contains("Launched \"(null)\""));
}

TEST_F(LauncherAppDelegate, DamagedPreferencesAreReportedInTheLog) {
    platform.userDefaults.damaged = "/home/t/x.plist.damaged";
    _setStandardStreams(stderr, stdout);
    testing::internal::CaptureStderr();
    start();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("/home/t/x.plist.damaged"), std::string::npos);
    EXPECT_THAT(contentsOf(getLogFilePath().value()), HasSubstr("(ERR)"));
    EXPECT_EQ(messages().size(), 7U);
}

TEST_F(LauncherAppDelegate, AnInvalidLevelIsAFaultBeforeAnythingIsLaunched) {
    platform.userDefaults.stored["FileLogging"] = "loud";
    EXPECT_THROW(delegate().applicationDidFinishLaunching(), Exception);
    EXPECT_THAT(calls(), Not(Contains("terminate")));
}

using LauncherAppDelegateDeathTest = LauncherAppDelegate;

TEST_F(LauncherAppDelegateDeathTest, MissingDefaultsEndTheProcessForWantOfALevel) {
    _setStandardStreams(stderr, stdout);
    std::erase(platform.bundle.resources, "Defaults.plist");
    EXPECT_EXIT(delegate().applicationDidFinishLaunching(), testing::KilledBySignal(SIGABRT),
                "ASSERTION ERROR: fileLevel \\(");
}

} // namespace
} // namespace quillmark
