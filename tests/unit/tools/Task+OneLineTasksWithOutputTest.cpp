#include "fakes/FakePlatform.h"
#include "support/LogFixture.h"
#include "tools/Task+OneLineTasksWithOutput.h"
#include "utils/Exception.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <thread>

namespace quillmark {
namespace {

using test::Lines;
using testing::Contains;

/// Real programs, run by the real platform.
class TaskRunner : public testing::Test {
protected:
    std::optional<std::string> shell(const std::string &script) {
        return stringByLaunchingPath("/bin/sh", {"-c", script}, {}, &error);
    }
    static int openDescriptors() {
        int count = 0;
        DIR *folder = ::opendir("/proc/self/fd");
        while (::readdir(folder) != nullptr) { // NOLINT(concurrency-mt-unsafe)
            ++count;
        }
        ::closedir(folder);
        return count;
    }
    Value info(std::string_view key) const { return valueOf(error->userInfo, key); }

    std::optional<Error> error = Error{};
};

TEST_F(TaskRunner, OutputComesBackAsPrinted) {
    EXPECT_EQ(shell("printf ' a\\n\\nb \\n\\n'"), " a\n\nb \n\n");
    EXPECT_FALSE(error);
}

TEST_F(TaskRunner, NoOutputIsAnEmptyTextAndNotANullOne) {
    EXPECT_EQ(shell("true"), "");
    EXPECT_FALSE(error);
}

TEST_F(TaskRunner, ArgumentsArePassedAsTheyAre) {
    EXPECT_EQ(stringByLaunchingPath("/usr/bin/printf", {"%s|", "a b", "", "$(x) 'é'"}, {}, &error), "a b||$(x) 'é'|");
}

TEST_F(TaskRunner, AnythingOnStandardErrorIsAnErrorBesidesTheOutput) {
    EXPECT_EQ(shell("echo out; echo err >&2"), "out\n"); // required as it stands
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain, "com.apple.NSTask.OneLineTasksWithOutput");
    EXPECT_EQ(error->code, -2);
    EXPECT_EQ(error->userInfo, Dictionary({{kTaskStandardErrorKey, "err\n"}, {kTaskTerminationStatusKey, 0}}));
}

TEST_F(TaskRunner, AnotherStatusThanZeroIsAFailureBesidesTheOutput) {
    EXPECT_EQ(shell("echo out; exit 3"), "out\n");
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, -1);
    EXPECT_EQ(error->failureReason(), "Process Failed");
    EXPECT_EQ(error->description(), "Task terminationStatus was 3");
    EXPECT_EQ(info(kTaskTerminationStatusKey), Value(3));
    EXPECT_EQ(info(kTaskStandardErrorKey), Value(""));
    EXPECT_EQ(error->userInfo.size(), 4U);
}

TEST_F(TaskRunner, ASignalsNumberIsTheStatusOfWhatItEnded) {
    shell("kill -KILL $$");
    EXPECT_EQ(info(kTaskTerminationStatusKey), Value(SIGKILL));
}

TEST_F(TaskRunner, AProgramThatCannotBeLaunchedIsAFailureWithoutUserInfo) {
    EXPECT_EQ(stringByLaunchingPath("/no/such/program", {}, {}, &error), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, -1);
    EXPECT_TRUE(error->userInfo.empty()); // deliberate: the list of values ends at the first missing one
}

TEST_F(TaskRunner, TheErrorNeedsNoPlace) {
    EXPECT_EQ(stringByLaunchingPath("/bin/echo", {}, {}, nullptr), "\n");
    EXPECT_EQ(stringByLaunchingPath("/no/such/program", {}, {}, nullptr), std::nullopt);
}

TEST_F(TaskRunner, OutputThatIsNoUtf8IsNull) {
    EXPECT_EQ(shell("printf 'a\\377b'"), std::nullopt);
    EXPECT_FALSE(error);
    EXPECT_EQ(shell("echo out; printf '\\377' >&2"), "out\n");
    EXPECT_FALSE(error); // what can't be read counts as nothing
    shell("printf '\\377' >&2; exit 4");
    EXPECT_TRUE(error->userInfo.empty());
}

TEST_F(TaskRunner, TheCallbackIsToldTheProcessBeforeAnyOutput) {
    std::int32_t told = 0;
    const std::optional<std::string> output = stringByLaunchingPath(
        "/bin/sh", {"-c", "echo $$"}, [&told](std::int32_t pid) { told = pid; }, &error);
    EXPECT_EQ(output, std::to_string(told) + '\n');
}

TEST_F(TaskRunner, AGrandchildThatHoldsAPipeIsWaitedFor) {
    EXPECT_EQ(shell("(sleep 0.2; echo late) & echo early"), "early\nlate\n");
}

TEST_F(TaskRunner, AChildThatClosesItsPipesAndStaysIsWaitedFor) {
    EXPECT_EQ(shell("echo a; exec >&- 2>&-; sleep 0.2; exit 5"), "a\n");
    EXPECT_EQ(info(kTaskTerminationStatusKey), Value(5));
}

TEST_F(TaskRunner, MuchOutputOnBothPipesAtOnceIsReadWhole) {
    constexpr size_t kBytes = 100'000'000;
    const std::string output =
        *shell("head -c 100000000 /dev/zero | tr '\\0' e >&2 & head -c 100000000 /dev/zero | tr '\\0' o; wait");
    EXPECT_EQ(output.size(), kBytes);
    EXPECT_EQ(output.find_first_not_of('o'), std::string::npos);
    EXPECT_EQ(info(kTaskStandardErrorKey).text()->size(), kBytes);
}

TEST_F(TaskRunner, OtherEventsOfTheLoopAreServedMeanwhile) {
    MainThread &mainThread = platform().mainThread;
    int turns = 0;
    bool isOver = false;
    const std::function<void()> again = [&] {
        ++turns;
        if (!isOver) {
            mainThread.post(again);
        }
    };
    mainThread.post(again);
    shell("sleep 0.2");
    EXPECT_GT(turns, 5);
    isOver = true;
    mainThread.runOnce(); // the last one
}

TEST_F(TaskRunner, NoDescriptorIsLeftBehindByAThousandRuns) {
    shell("true");
    const int before = openDescriptors();
    for (int i = 0; i < 500; ++i) {
        stringByLaunchingPath("/bin/true", {}, {}, &error);
        stringByLaunchingPath("/no/such/program", {}, {}, &error);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(TaskRunner, TheChildHoldsNoDescriptorOfOursButTheInheritedOnes) {
    int inherited = 0;
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
        const int flags = ::fcntl(descriptor, F_GETFD);
        inherited += flags >= 0 && (flags & FD_CLOEXEC) == 0 ? 1 : 0;
    }
    const std::string listed = *stringByLaunchingPath("/bin/ls", {"/proc/self/fd"}, {}, &error);
    EXPECT_EQ(std::count(listed.begin(), listed.end(), '\n'), inherited + 1); // and the folder that ls reads
}

TEST_F(TaskRunner, AByteOrderMarkIsPartOfTheOutput) {
    EXPECT_EQ(shell("printf '\\357\\273\\277out'"), "\ufeffout");
    EXPECT_FALSE(error);
    shell("printf '\\357\\273\\277' >&2");
    ASSERT_TRUE(error); // as anything on standard error is one
    EXPECT_EQ(info(kTaskStandardErrorKey), Value("\ufeff"));
}

TEST_F(TaskRunner, RunsOnAnyThread) {
    std::optional<std::string> output;
    std::thread([&] { output = shell("echo out; sleep 0.1; echo more"); }).join();
    EXPECT_EQ(output, "out\nmore\n");
    EXPECT_FALSE(error);
}

TEST_F(TaskRunner, OnAThreadOfItsOwnGrandchildrenAndMuchOutputAreWaitedForAsWell) {
    std::optional<std::string> output;
    std::thread([&] {
        output = shell("head -c 1000000 /dev/zero | tr '\\0' e >&2; (sleep 0.1; echo late) & echo early");
    }).join();
    EXPECT_EQ(output, "early\nlate\n");
    EXPECT_EQ(info(kTaskStandardErrorKey).text()->size(), 1'000'000U);
}

TEST_F(TaskRunner, ACallbackThatRaisesEndsTheRunAndLeavesNoDeadProcess) {
    std::int32_t process = 0;
    const auto raise = [&process](const auto &exception) {
        return [&process, exception](std::int32_t pid) {
            process = pid;
            throw exception;
        };
    };
    const auto isGone = [&process] { return ::kill(process, 0) != 0 && errno == ESRCH; };
    EXPECT_EQ(stringByLaunchingPath("/bin/true", {}, raise(Exception("Name", "reason")), &error), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, -1);
    EXPECT_TRUE(error->userInfo.empty());
    while (!isGone()) { // it is waited for on a thread of its own
        std::this_thread::yield();
    }
    // Any other kind is the caller's.
    EXPECT_THROW(stringByLaunchingPath("/bin/true", {}, raise(7), &error), int);
    while (!isGone()) {
        std::this_thread::yield();
    }
}

TEST_F(TaskRunner, ARunWhoseEndCannotBeLearnedIsAFailure) {
    // Somebody else asks for the status first.
    const std::optional<std::string> output = stringByLaunchingPath(
        "/bin/echo", {"out"}, [](std::int32_t pid) { ::waitpid(pid, nullptr, 0); }, &error);
    EXPECT_EQ(output, "out\n");
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description(), "Task terminationStatus was -1");
}

TEST_F(TaskRunner, WaitsWithoutTurningInCircles) {
    const std::clock_t before = std::clock();
    EXPECT_EQ(shell("sleep 0.5; echo x"), "x\n");
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10);
}

/// With fakes at the ports.
class TaskRunnerPorts : public test::LogFixture {};

TEST_F(TaskRunnerPorts, ALaunchIsLoggedInDetail) {
    platform.tasks.canStart = false;
    std::optional<Error> error;
    EXPECT_EQ(stringByLaunchingPath("/bin/x", {"a"}, {}, &error), std::nullopt);
    EXPECT_EQ(platform.transcript.calls(), Lines{"launch /bin/x a"});
    EXPECT_EQ(error->code, -1);
}

TEST_F(TaskRunnerPorts, WithNothingLeftToWaitForTheWaitIsOver) {
    platform.tasks.outputs["/bin/x"] = "out"; // neither standard error nor the end can be waited for
    std::optional<std::string> output;
    std::optional<Error> error;
    std::thread([&] { output = stringByLaunchingPath("/bin/x", {}, {}, &error); }).join();
    EXPECT_EQ(output, "out");
    EXPECT_FALSE(error);
}

using TaskRunnerDeathTest = TaskRunnerPorts;

TEST_F(TaskRunnerDeathTest, AProcessWithoutANumberEndsTheProgram) {
    platform.tasks.processIdentifier = 0;
    EXPECT_EXIT(stringByLaunchingPath("/bin/x", {}, {}, nullptr), testing::KilledBySignal(SIGABRT),
                "ASSERTION ERROR: pid \\(file \"NSTask\\+OneLineTasksWithOutput\", line 183\\)");
}

class PrivilegedTask : public testing::Test {
protected:
    std::optional<std::string> run() {
        std::unique_ptr<Authorization::Reference> reference;
        EXPECT_EQ(authorization.create(reference), 0);
        return stringByLaunchingPath(
            "/bin/tööl", {"a b", "é"}, *reference, [this](std::int32_t) { isCalled = true; }, &error);
    }
    test::Transcript transcript;
    test::FakeAuthorization authorization{transcript};
    std::optional<Error> error = Error{};
    bool isCalled = false;
};

TEST_F(PrivilegedTask, PathAndArgumentsArePassedAsUtf8) {
    authorization.output = "done\n";
    EXPECT_EQ(run(), "done\n");
    EXPECT_FALSE(error);
    EXPECT_THAT(transcript.calls(), Contains("AuthorizationExecuteWithPrivileges /bin/tööl a b é"));
}

TEST_F(PrivilegedTask, AFailedStartIsAnErrorWithThePlatformsStatus) {
    authorization.executeStatus = -60006;
    EXPECT_EQ(run(), std::nullopt);
    EXPECT_EQ(error->domain, "com.apple.NSTask.OneLineTasksWithOutput");
    EXPECT_EQ(error->code, -60006);
    EXPECT_TRUE(error->userInfo.empty());
}

TEST_F(PrivilegedTask, OutputIsReadInPiecesOf64BytesAndDecodedAcrossThem) {
    const std::string text = std::string(63, 'x') + "é📄" + std::string(70, 'y');
    authorization.output = text;
    EXPECT_EQ(run(), text);
    EXPECT_EQ(authorization.reads, std::vector<std::int64_t>(4, 64));
}

TEST_F(PrivilegedTask, NoOutputIsAnEmptyText) {
    EXPECT_EQ(run(), "");
    EXPECT_EQ(run(), "");
}

TEST_F(PrivilegedTask, TheCallbackIsNeverCalled) {
    run();
    EXPECT_FALSE(isCalled); // deliberate
}

} // namespace
} // namespace quillmark
