#include "fakes/FakePlatform.h"
#include "support/LogFixture.h"
#include "tools/Task+OneLineTasksWithOutput.h"
#include "utils/Exception.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <thread>

namespace quillmark {
namespace {

/// Real programs, run by the real platform.
class TaskRunner : public testing::Test {
protected:
    QString shell(const QString &script) {
        return stringByLaunchingPath(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}, {}, &error);
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
    QVariant info(QLatin1StringView key) const { return error->userInfo.value(key); }

    std::optional<Error> error = Error{};
};

TEST_F(TaskRunner, OutputComesBackAsPrinted) {
    EXPECT_EQ(shell(QStringLiteral("printf ' a\\n\\nb \\n\\n'")), QStringLiteral(" a\n\nb \n\n"));
    EXPECT_FALSE(error);
}

TEST_F(TaskRunner, NoOutputIsAnEmptyTextAndNotANullOne) {
    const QString output = shell(QStringLiteral("true"));
    EXPECT_TRUE(output.isEmpty());
    EXPECT_FALSE(output.isNull());
    EXPECT_FALSE(error);
}

TEST_F(TaskRunner, ArgumentsArePassedAsTheyAre) {
    const QStringList arguments = {QStringLiteral("%s|"), QStringLiteral("a b"), QStringLiteral(""),
                                   QStringLiteral("$(x) 'é'")};
    EXPECT_EQ(stringByLaunchingPath(QStringLiteral("/usr/bin/printf"), arguments, {}, &error),
              QStringLiteral("a b||$(x) 'é'|"));
}

TEST_F(TaskRunner, AnythingOnStandardErrorIsAnErrorBesidesTheOutput) {
    EXPECT_EQ(shell(QStringLiteral("echo out; echo err >&2")), QStringLiteral("out\n")); // required as it stands
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain, QStringLiteral("com.apple.NSTask.OneLineTasksWithOutput"));
    EXPECT_EQ(error->code, -2);
    EXPECT_EQ(error->userInfo,
              QVariantMap({{kTaskStandardErrorKey, QStringLiteral("err\n")}, {kTaskTerminationStatusKey, 0}}));
}

TEST_F(TaskRunner, AnotherStatusThanZeroIsAFailureBesidesTheOutput) {
    EXPECT_EQ(shell(QStringLiteral("echo out; exit 3")), QStringLiteral("out\n"));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, -1);
    EXPECT_EQ(error->failureReason(), QStringLiteral("Process Failed"));
    EXPECT_EQ(error->description(), QStringLiteral("Task terminationStatus was 3"));
    EXPECT_EQ(info(kTaskTerminationStatusKey), QVariant(3));
    EXPECT_EQ(info(kTaskStandardErrorKey), QVariant(QStringLiteral("")));
    EXPECT_EQ(error->userInfo.size(), 4);
}

TEST_F(TaskRunner, ASignalsNumberIsTheStatusOfWhatItEnded) {
    shell(QStringLiteral("kill -KILL $$"));
    EXPECT_EQ(info(kTaskTerminationStatusKey), QVariant(SIGKILL));
}

TEST_F(TaskRunner, AProgramThatCannotBeLaunchedIsAFailureWithoutUserInfo) {
    EXPECT_TRUE(stringByLaunchingPath(QStringLiteral("/no/such/program"), {}, {}, &error).isNull());
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, -1);
    EXPECT_TRUE(error->userInfo.isEmpty()); // deliberate: the list of values ends at the first missing one
}

TEST_F(TaskRunner, TheErrorNeedsNoPlace) {
    EXPECT_EQ(stringByLaunchingPath(QStringLiteral("/bin/echo"), {}, {}, nullptr), QStringLiteral("\n"));
    EXPECT_TRUE(stringByLaunchingPath(QStringLiteral("/no/such/program"), {}, {}, nullptr).isNull());
}

TEST_F(TaskRunner, OutputThatIsNoUtf8IsNull) {
    EXPECT_TRUE(shell(QStringLiteral("printf 'a\\377b'")).isNull());
    EXPECT_FALSE(error);
    EXPECT_EQ(shell(QStringLiteral("echo out; printf '\\377' >&2")), QStringLiteral("out\n"));
    EXPECT_FALSE(error); // what can't be read counts as nothing
    shell(QStringLiteral("printf '\\377' >&2; exit 4"));
    EXPECT_TRUE(error->userInfo.isEmpty());
}

TEST_F(TaskRunner, TheCallbackIsToldTheProcessBeforeAnyOutput) {
    qint32 told = 0;
    const QString output = stringByLaunchingPath(
        QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QStringLiteral("echo $$")},
        [&told](qint32 pid) { told = pid; }, &error);
    EXPECT_EQ(output.trimmed().toInt(), told);
}

TEST_F(TaskRunner, AGrandchildThatHoldsAPipeIsWaitedFor) {
    EXPECT_EQ(shell(QStringLiteral("(sleep 0.2; echo late) & echo early")), QStringLiteral("early\nlate\n"));
}

TEST_F(TaskRunner, AChildThatClosesItsPipesAndStaysIsWaitedFor) {
    EXPECT_EQ(shell(QStringLiteral("echo a; exec >&- 2>&-; sleep 0.2; exit 5")), QStringLiteral("a\n"));
    EXPECT_EQ(info(kTaskTerminationStatusKey), QVariant(5));
}

TEST_F(TaskRunner, MuchOutputOnBothPipesAtOnceIsReadWhole) {
    constexpr qsizetype kBytes = 100'000'000;
    const QString output = shell(QStringLiteral(
        "head -c 100000000 /dev/zero | tr '\\0' e >&2 & head -c 100000000 /dev/zero | tr '\\0' o; wait"));
    EXPECT_EQ(output.size(), kBytes);
    EXPECT_EQ(output.count(u'o'), kBytes);
    EXPECT_EQ(info(kTaskStandardErrorKey).toString().size(), kBytes);
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
    shell(QStringLiteral("sleep 0.2"));
    EXPECT_GT(turns, 5);
    isOver = true;
    mainThread.runOnce(); // the last one
}

TEST_F(TaskRunner, NoDescriptorIsLeftBehindByAThousandRuns) {
    shell(QStringLiteral("true"));
    const int before = openDescriptors();
    for (int i = 0; i < 500; ++i) {
        stringByLaunchingPath(QStringLiteral("/bin/true"), {}, {}, &error);
        stringByLaunchingPath(QStringLiteral("/no/such/program"), {}, {}, &error);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(TaskRunner, TheChildHoldsNoDescriptorOfOursButTheInheritedOnes) {
    int inherited = 0;
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
        const int flags = ::fcntl(descriptor, F_GETFD);
        inherited += flags >= 0 && (flags & FD_CLOEXEC) == 0 ? 1 : 0;
    }
    const QString listed =
        stringByLaunchingPath(QStringLiteral("/bin/ls"), {QStringLiteral("/proc/self/fd")}, {}, &error);
    EXPECT_EQ(listed.count(u'\n'), inherited + 1); // and the folder that ls reads
}

TEST_F(TaskRunner, AByteOrderMarkIsPartOfTheOutput) {
    EXPECT_EQ(shell(QStringLiteral("printf '\\357\\273\\277out'")), QStringLiteral("\ufeffout"));
    EXPECT_FALSE(error);
    shell(QStringLiteral("printf '\\357\\273\\277' >&2"));
    ASSERT_TRUE(error); // as anything on standard error is one
    EXPECT_EQ(info(kTaskStandardErrorKey), QVariant(QStringLiteral("\ufeff")));
}

TEST_F(TaskRunner, RunsOnAnyThread) {
    QString output;
    std::thread([&] { output = shell(QStringLiteral("echo out; sleep 0.1; echo more")); }).join();
    EXPECT_EQ(output, QStringLiteral("out\nmore\n"));
    EXPECT_FALSE(error);
}

TEST_F(TaskRunner, OnAThreadOfItsOwnGrandchildrenAndMuchOutputAreWaitedForAsWell) {
    QString output;
    std::thread([&] {
        output =
            shell(QStringLiteral("head -c 1000000 /dev/zero | tr '\\0' e >&2; (sleep 0.1; echo late) & echo early"));
    }).join();
    EXPECT_EQ(output, QStringLiteral("early\nlate\n"));
    EXPECT_EQ(info(kTaskStandardErrorKey).toString().size(), 1'000'000);
}

TEST_F(TaskRunner, ACallbackThatRaisesEndsTheRunAndLeavesNoDeadProcess) {
    qint32 process = 0;
    const auto raise = [&process](const auto &exception) {
        return [&process, exception](qint32 pid) {
            process = pid;
            throw exception;
        };
    };
    const auto isGone = [&process] { return ::kill(process, 0) != 0 && errno == ESRCH; };
    EXPECT_TRUE(stringByLaunchingPath(QStringLiteral("/bin/true"), {},
                                      raise(Exception(QStringLiteral("Name"), QStringLiteral("reason"))), &error)
                    .isNull());
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, -1);
    EXPECT_TRUE(error->userInfo.isEmpty());
    while (!isGone()) { // it is waited for on a thread of its own
        std::this_thread::yield();
    }
    // Any other kind is the caller's.
    EXPECT_THROW(stringByLaunchingPath(QStringLiteral("/bin/true"), {}, raise(7), &error), int);
    while (!isGone()) {
        std::this_thread::yield();
    }
}

TEST_F(TaskRunner, ARunWhoseEndCannotBeLearnedIsAFailure) {
    // Somebody else asks for the status first.
    const QString output = stringByLaunchingPath(
        QStringLiteral("/bin/echo"), {QStringLiteral("out")}, [](qint32 pid) { ::waitpid(pid, nullptr, 0); }, &error);
    EXPECT_EQ(output, QStringLiteral("out\n"));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description(), QStringLiteral("Task terminationStatus was -1"));
}

TEST_F(TaskRunner, WaitsWithoutTurningInCircles) {
    const std::clock_t before = std::clock();
    EXPECT_EQ(shell(QStringLiteral("sleep 0.5; echo x")), QStringLiteral("x\n"));
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10);
}

/// With fakes at the ports.
class TaskRunnerPorts : public test::LogFixture {};

TEST_F(TaskRunnerPorts, ALaunchIsLoggedInDetail) {
    platform.tasks.canStart = false;
    std::optional<Error> error;
    EXPECT_TRUE(stringByLaunchingPath(QStringLiteral("/bin/x"), {QStringLiteral("a")}, {}, &error).isNull());
    EXPECT_EQ(platform.transcript.calls(), QStringList({QStringLiteral("launch /bin/x a")}));
    EXPECT_EQ(error->code, -1);
}

TEST_F(TaskRunnerPorts, WithNothingLeftToWaitForTheWaitIsOver) {
    platform.tasks.outputs.insert(QStringLiteral("/bin/x"),
                                  "out"); // neither standard error nor the end can be waited for
    QString output;
    std::optional<Error> error;
    std::thread([&] { output = stringByLaunchingPath(QStringLiteral("/bin/x"), {}, {}, &error); }).join();
    EXPECT_EQ(output, QStringLiteral("out"));
    EXPECT_FALSE(error);
}

using TaskRunnerDeathTest = TaskRunnerPorts;

TEST_F(TaskRunnerDeathTest, AProcessWithoutANumberEndsTheProgram) {
    platform.tasks.processIdentifier = 0;
    EXPECT_EXIT(stringByLaunchingPath(QStringLiteral("/bin/x"), {}, {}, nullptr), testing::KilledBySignal(SIGABRT),
                "ASSERTION ERROR: pid \\(file \"NSTask\\+OneLineTasksWithOutput\", line 183\\)");
}

class PrivilegedTask : public testing::Test {
protected:
    QString run() {
        std::unique_ptr<Authorization::Reference> reference;
        EXPECT_EQ(authorization.create(reference), 0);
        return stringByLaunchingPath(
            QStringLiteral("/bin/tööl"), {QStringLiteral("a b"), QStringLiteral("é")}, *reference,
            [this](qint32) { isCalled = true; }, &error);
    }
    test::Transcript transcript;
    test::FakeAuthorization authorization{transcript};
    std::optional<Error> error = Error{};
    bool isCalled = false;
};

TEST_F(PrivilegedTask, PathAndArgumentsArePassedAsUtf8) {
    authorization.output = "done\n";
    EXPECT_EQ(run(), QStringLiteral("done\n"));
    EXPECT_FALSE(error);
    EXPECT_TRUE(transcript.calls().contains(QStringLiteral("AuthorizationExecuteWithPrivileges /bin/tööl a b é")));
}

TEST_F(PrivilegedTask, AFailedStartIsAnErrorWithThePlatformsStatus) {
    authorization.executeStatus = -60006;
    EXPECT_TRUE(run().isNull());
    EXPECT_EQ(error->domain, QStringLiteral("com.apple.NSTask.OneLineTasksWithOutput"));
    EXPECT_EQ(error->code, -60006);
    EXPECT_TRUE(error->userInfo.isEmpty());
}

TEST_F(PrivilegedTask, OutputIsReadInPiecesOf64BytesAndDecodedAcrossThem) {
    const QString text = QString(63, u'x') + QStringLiteral("é📄") + QString(70, u'y');
    authorization.output = text.toStdString();
    EXPECT_EQ(run(), text);
    EXPECT_EQ(authorization.reads, std::vector<std::int64_t>(4, 64));
}

TEST_F(PrivilegedTask, NoOutputIsAnEmptyText) {
    EXPECT_FALSE(run().isNull());
    EXPECT_TRUE(run().isEmpty());
}

TEST_F(PrivilegedTask, TheCallbackIsNeverCalled) {
    run();
    EXPECT_FALSE(isCalled); // deliberate
}

} // namespace
} // namespace quillmark
