#include "fakes/FakePlatform.h"
#include "fakes/FakeSessionBus.h"
#include "platform/Clock.h"
#include "platform/files/HomeFolder.h"
#include "platform/linux/LinuxSystemInfo.h"
#include "platform/linux/desktop/LinuxAppleEvents.h"
#include "platform/linux/desktop/LinuxScripts.h"
#include "platform/linux/desktop/LinuxWorkspace.h"
#include "platform/linux/mainthread/LinuxMainThread.h"
#include "platform/linux/processes/LinuxTasks.h"
#include "support/IdleProcess.h"
#include "support/TemporaryHome.h"
#include "support/ValuePrinter.h"
#include "utils/CurrentThread.h"
#include "utils/IntegerValue.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <gmock/gmock.h>

namespace quillmark {
namespace {

using Paths = std::vector<std::string>;

TEST(NativePlatform, IsInForceUntilAnotherOneIsInstalled) {
    EXPECT_EQ(&platform(), &nativePlatform());
    {
        const test::FakePlatform fake;
        EXPECT_EQ(&platform(), &fake.platform);
    }
    EXPECT_EQ(&platform(), &nativePlatform());
}

TEST(NativePlatform, TellsTheTime) {
    const auto before = std::chrono::system_clock::now();
    const auto now = nativePlatform().clock.now();
    EXPECT_GE(now + std::chrono::microseconds(1), before);
    nativePlatform().clock.sleep(std::chrono::microseconds(1));
    EXPECT_GT(nativePlatform().clock.now(), now);
}

class SystemInfoTest : public testing::Test {
protected:
    test::FakePropertyList propertyList;
    const LinuxSystemInfo info{propertyList};
};

TEST_F(SystemInfoTest, KnowsTheProcess) {
    EXPECT_EQ(info.processIdentifier(), ::getpid());
    EXPECT_EQ(info.processName(), "quillmark_unit_tests");
}

TEST_F(SystemInfoTest, ThreadsHaveNumbersOfTheirOwn) {
    EXPECT_EQ(info.currentThreadNumber(), static_cast<std::uint32_t>(::gettid()));
    std::uint32_t other = 0;
    std::thread([&] { other = info.currentThreadNumber(); }).join();
    EXPECT_NE(other, info.currentThreadNumber());
}

TEST_F(SystemInfoTest, ErrorNumbersHaveTextsWhenTheSystemKnowsThem) {
    EXPECT_EQ(info.posixErrorText(ENOENT), "No such file or directory");
    EXPECT_EQ(info.posixErrorText(0), "Success");
    EXPECT_FALSE(info.posixErrorText(99999));
    EXPECT_FALSE(info.posixErrorText(-5));
}

TEST(CurrentThread, ItsNameIsSeenByTheSystem) {
    std::string name;
    std::thread([&name] {
        setCurrentThreadName("a name that is longer than the system's");
        std::getline(std::ifstream("/proc/thread-self/comm"), name);
    }).join();
    EXPECT_EQ(name, "a name that is ");
}

TEST(MainThreadTest, CallsAreMadeInOrderByTheEventLoop) {
    LinuxMainThread mainThread;
    std::string order;
    bool isOver = false;
    std::thread([&] {
        mainThread.post([&] {
            order += 'a';
            mainThread.post([&] { isOver = true; });
        });
        mainThread.post([&] { order += 'b'; });
    }).join();
    EXPECT_TRUE(order.empty());
    while (!isOver) {
        mainThread.runOnce();
    }
    EXPECT_EQ(order, "ab");
}

TEST(MainThreadTest, TheFakeIsPumpedByHand) {
    test::FakeMainThread mainThread;
    int made = 0;
    mainThread.post([&] {
        ++made;
        mainThread.post([&] { ++made; });
    });
    EXPECT_EQ(made, 0);
    EXPECT_EQ(mainThread.pump(), 2);
    EXPECT_EQ(made, 2);
}

class WorkspaceTest : public testing::Test {
protected:
    test::TemporaryHome home;
    test::FakePropertyList propertyList;
    test::FakeSessionBus bus;
    test::FakeClock clock;
    LinuxWorkspace workspace{propertyList, bus, clock};
};

using HomeFolder = WorkspaceTest;

TEST_F(HomeFolder, IsThatOfTheEnvironment) {
    EXPECT_EQ(homeFolder(), home.path());
    ::setenv("HOME", "/somewhere//", 1);
    EXPECT_EQ(homeFolder(), "/somewhere");
}

TEST_F(HomeFolder, ThatIsTheRootFolderLeavesNoSecondSlash) {
    ::setenv("HOME", "/", 1);
    EXPECT_EQ(homeFolder(), "/");
    EXPECT_EQ(expandingTilde("~/Library"), "/Library");
    EXPECT_EQ(workspace.applicationsFolders(Workspace::Domain::User), Paths{"/Applications"});
    EXPECT_THAT(workspace.downloadsFolders(), testing::Contains("/Downloads"));
}

TEST_F(HomeFolder, IsTheAccountsWhenTheEnvironmentNamesNone) {
    ::setenv("HOME", "relative", 1);
    EXPECT_TRUE(homeFolder().starts_with('/'));
    ::unsetenv("HOME");
    EXPECT_TRUE(homeFolder().starts_with('/'));
}

TEST_F(HomeFolder, ReplacesALeadingTildeOnly) {
    EXPECT_EQ(expandingTilde("~/a/~"), home.path("a/~"));
    EXPECT_EQ(expandingTilde("~"), home.path());
    EXPECT_EQ(expandingTilde("~other/a"), "~other/a");
    EXPECT_EQ(expandingTilde("/~/a"), "/~/a");
    EXPECT_EQ(expandingTilde(""), "");
}

TEST_F(WorkspaceTest, KnowsTheApplicationsFoldersOfEachDomain) {
    EXPECT_EQ(workspace.applicationsFolders(Workspace::Domain::User), Paths{home.path("Applications")});
    EXPECT_EQ(workspace.applicationsFolders(Workspace::Domain::Local), Paths{"/Applications"});
    EXPECT_EQ(workspace.applicationsFolders(Workspace::Domain::All),
              (Paths{home.path("Applications"), "/Applications"}));
}

TEST_F(WorkspaceTest, WhatCannotBeStartedIsNotLaunched) {
    EXPECT_FALSE(workspace.launchApplication(home.path("missing")));
    EXPECT_FALSE(workspace.launchApplication(home.write("not executable", "x")));
    EXPECT_FALSE(workspace.launchApplication(home.path("None.app")));
    EXPECT_FALSE(workspace.launchApplication(""));
    EXPECT_FALSE(workspace.launchApplication("relative"));
}

TEST_F(WorkspaceTest, AnApplicationThatRunsIsNotStartedAgain) {
    const std::string bundle = home.path("Endless.app");
    home.makeFolder("Endless.app/Contents/MacOS");
    ASSERT_TRUE(std::filesystem::copy_file("/usr/bin/yes", bundle + "/Contents/MacOS/Endless"));
    const auto processes = [&] {
        std::vector<std::int64_t> found;
        for (const Dictionary &record : workspace.launchedApplications()) {
            if (valueOf(record, kApplicationPath) == bundle) {
                found.push_back(integerValueOf(valueOf(record, kApplicationProcessIdentifier)));
            }
        }
        return found;
    };
    home.write("Library/Caches/Quillmark/Endless.process", "which names no process");
    for (int round = 0; round < 2; ++round) { // once it has ended, it is
        EXPECT_TRUE(workspace.launchApplication(bundle));
        EXPECT_TRUE(workspace.launchApplication(bundle));
        const auto running = processes();
        EXPECT_EQ(running.size(), 1U);
        for (const std::int64_t process : running) {
            ::kill(static_cast<pid_t>(process), SIGKILL);
            ::waitpid(static_cast<pid_t>(process), nullptr, 0);
        }
    }
}

class AppleEventsTest : public WorkspaceTest {
protected:
    /// What comes of a request to quit.
    std::int32_t quit(const std::string &bundleIdentifier) {
        EXPECT_EQ(events.buildQuitEvent(bundleIdentifier, event), 0);
        return events.sendMessage(*event);
    }

    LinuxAppleEvents events{workspace, bus};
    std::unique_ptr<AppleEvents::Event> event;
};

class FileManager : public AppleEventsTest {
protected:
    const std::string kFinder = "com.apple.finder";
};

TEST_F(FileManager, TakesTheFindersPlaceAmongTheApplications) {
    bus.processes["org.freedesktop.FileManager1"] = ::getpid();
    const Dictionary expected{{kApplicationBundleIdentifier, kFinder},
                              {kApplicationPath, "/System/Library/CoreServices/Finder.app"},
                              {kApplicationProcessIdentifier, ::getpid()}};
    EXPECT_THAT(workspace.launchedApplications(), testing::Contains(expected));
}

TEST_F(FileManager, IsNotAmongThemWhenNoneRuns) {
    for (const Dictionary &record : workspace.launchedApplications()) {
        EXPECT_NE(valueOf(record, kApplicationBundleIdentifier), Value(kFinder));
    }
}

TEST_F(FileManager, CanAlwaysBeLaunched) {
    const std::string path = workspace.bundleWithIdentifier(kFinder).value_or("");
    EXPECT_EQ(path, "/System/Library/CoreServices/Finder.app");
    EXPECT_TRUE(workspace.launchApplication(path));
}

TEST_F(FileManager, IsEndedByTheRequestToQuit) {
    const test::IdleProcess running;
    bus.processes["org.freedesktop.FileManager1"] = running.identifier;
    EXPECT_EQ(quit(kFinder), 0);
    EXPECT_EQ(running.endingSignal(), SIGTERM);
}

TEST_F(FileManager, CannotBeAskedToQuitWhenNoneRuns) { EXPECT_EQ(quit(kFinder), -600); }

TEST_F(AppleEventsTest, AnApplicationWithAnActionToQuitGetsNoSignal) {
    const std::string identifier = "com.example.polite"; // which does not run, so that a signal would fail
    bus.quittable.insert(identifier);
    EXPECT_EQ(quit(identifier), 0);
    EXPECT_EQ(bus.activated, std::vector{identifier});
}

TEST_F(AppleEventsTest, ARequestToNobodyCannotBeBuilt) {
    EXPECT_EQ(events.buildQuitEvent(std::string(), event), -50);
    EXPECT_EQ(event, nullptr);
}

TEST_F(AppleEventsTest, TheSystemProcessIsNotThere) {
    std::unique_ptr<AppleEvents::Address> address;
    ASSERT_EQ(events.createProcessAddress({0, 1}, address), 0);
    ASSERT_EQ(events.createEvent(fourCharacterCode("aevt"), fourCharacterCode("rest"), *address, event), 0);
    EXPECT_EQ(events.sendMessage(*event), -600);
    EXPECT_EQ(bus.activated, std::vector<std::string>());
}

TEST(ScriptsTest, AScriptNeitherCompilesNorHasAResult) {
    LinuxScripts scripts;
    const auto script = scripts.scriptWithSource("return true");
    ASSERT_NE(script, nullptr);
    EXPECT_FALSE(script->compile());
    EXPECT_FALSE(script->execute());
}

class TasksTest : public testing::Test {
protected:
    test::TemporaryHome home;
    LinuxTasks tasks;
};

TEST_F(TasksTest, ChildrenCanBeWaitedForEvenWhenTheirEndWasIgnored) {
    ::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(LinuxTasks().run("/bin/sh", {"-c", "exit 3"}, {}), 3);
}

TEST_F(TasksTest, AStartedProgramFindsTheProgramsOfTheGivenFolderFirst) {
    for (const char *name : {"first", "true"}) { // one of which the system has too
        const std::string program = home.write(std::string("programs/") + name, "#!/bin/sh\necho ours\n");
        ::chmod(program.c_str(), 0500);
    }
    const std::string answers = home.path("answers");
    ASSERT_EQ(::mkfifo(answers.c_str(), S_IRUSR | S_IWUSR), 0);
    const auto started = [&](const std::optional<std::string> &programFolder) {
        EXPECT_TRUE(
            tasks.start("/bin/sh", {"-c", "(env first; env true; echo end) >\"$HOME/answers\" 2>&1"}, programFolder));
        return test::readAll(answers); // which waits for the program
    };
    EXPECT_EQ(started(home.path("programs")), "ours\nours\nend\n");
    EXPECT_EQ(started({}).find("ours"), std::string::npos);
}

TEST(MainThreadTest, ADetachedThreadHasItsNameInTheLogToo) {
    LinuxMainThread mainThread;
    std::promise<std::string> prefix;
    mainThread.detachNewThread("repair", [&prefix] { prefix.set_value(currentThreadLogPrefix()); });
    EXPECT_EQ(prefix.get_future().get(), "[repair] ");
}

TEST_F(TasksTest, ARunFindsTheProgramsOfTheGivenFolderFirst) {
    const std::string program = home.write("programs/true", "#!/bin/sh\nexit 5\n");
    ::chmod(program.c_str(), 0500);
    const std::vector<std::string> script{"-c", "env true"};
    EXPECT_EQ(tasks.run("/bin/sh", script, home.path("programs")), 5);
    EXPECT_EQ(tasks.run("/bin/sh", script, {}), 0);
}

TEST_F(TasksTest, ARunWhoseEndTheSystemDoesNotKeepIsNone) {
    ::signal(SIGCHLD, SIG_IGN);
    EXPECT_FALSE(tasks.run("/bin/true", {}, {}));
    ::signal(SIGCHLD, SIG_DFL);
}

TEST_F(TasksTest, ARunThatIsNotWaitedForHasOurStreamsAndFolderAndLeavesNoDeadProcess) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    const int output = ::dup(STDOUT_FILENO);
    ::dup2(pipe[1], STDOUT_FILENO);
    EXPECT_TRUE(tasks.runUnwaited("/bin/sh", {"-c", "echo $$; pwd"}));
    ::dup2(output, STDOUT_FILENO);
    ::close(output);
    ::close(pipe[1]);
    FILE *printed = ::fdopen(pipe[0], "r");
    int process = 0;
    std::array<char, PATH_MAX> folder{};
    EXPECT_EQ(std::fscanf(printed, "%d %4095s", &process, folder.data()), 2);
    std::fclose(printed);
    EXPECT_STREQ(folder.data(), std::filesystem::current_path().c_str());
    while (::kill(process, 0) == 0) { // it is waited for on a thread of its own
        std::this_thread::yield();
    }
    EXPECT_FALSE(tasks.runUnwaited("/no/such/program", {}));
}

TEST_F(SystemInfoTest, AKernelsVersionIsNeverThatOfAMac) {
    const auto majorOf = [](std::int32_t kernel) { return belowAnyMac({kernel, 5, 1}).major; };
    EXPECT_EQ(majorOf(6), 6);
    EXPECT_EQ(majorOf(9), 9);
    EXPECT_EQ(majorOf(10), 9);
    EXPECT_EQ(majorOf(12), 9);
    EXPECT_FALSE(belowAnyMac({}).major);
}

TEST_F(TasksTest, AProgramsStatusIsItsOwnOrItsSignalsNumberAbove128) {
    EXPECT_EQ(tasks.run("/bin/true", {}, {}), 0);
    EXPECT_EQ(tasks.run("/bin/sh", {"-c", "kill -9 $$"}, {}), 137);
    EXPECT_FALSE(tasks.run("/no/such/program", {}, {}));
}

} // namespace
} // namespace quillmark
