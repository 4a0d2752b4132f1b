#include "tools/VersionOutput.h"
#include "fakes/FakePlatform.h"
#include "support/TemporaryHome.h"
#include "utils/Exception.h"

#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>

namespace quillmark {
namespace {

/// Real programs, run by the real platform.
class VersionOutput : public testing::Test {
protected:
    std::optional<std::string> printedBy(const std::string &script) {
        const std::string path = home.write("tool", "#!/bin/sh\n" + script + '\n');
        EXPECT_EQ(::chmod(path.c_str(), 0755), 0);
        return versionPrintedBy(path, nativePlatform().tasks);
    }
    /// The version in an output of these bytes.
    static std::optional<std::string> in(const std::string &output) {
        test::Transcript transcript;
        test::FakeTasks tasks(transcript);
        tasks.outputs["tool"] = output;
        return versionPrintedBy("tool", tasks);
    }
    /// The most memory that this process has held, in KiB.
    static std::int64_t peakMemory() {
        std::ifstream status("/proc/self/status");
        std::string word;
        std::int64_t amount = 0;
        while (status >> word && word != "VmHWM:") {
        }
        status >> amount;
        return amount;
    }

    static constexpr size_t kPiece = 65536; // what is read at once

    test::TemporaryHome home;
};

TEST_F(VersionOutput, IsWhatStandsBehindTheLastMarker) {
    EXPECT_EQ(in("Tool, by Someone Limited 1.14.4.0"), "1.14.4.0");
    EXPECT_EQ(in("Limited Limited 1.0 Limited 2.0"), "2.0");
    EXPECT_EQ(in("Limited 1.0 Limited"), "1.0 Limited");
    EXPECT_EQ(in("LimiLimited 3.0"), "3.0");
}

TEST_F(VersionOutput, IsAllOfItWithoutAMarker) {
    EXPECT_EQ(in("1.14.4.0"), "1.14.4.0");
    EXPECT_EQ(in("limited 1.0"), "limited 1.0");
    EXPECT_EQ(in("Limited\t1.0"), "Limited\t1.0");
    EXPECT_EQ(in("x"), "x");
}

TEST_F(VersionOutput, IsAllLinesToTheEnd) {
    EXPECT_EQ(in("Limited 1.0\n"), "1.0\n");
    EXPECT_EQ(in("Limited 1.0\nUsage\n"), "1.0\nUsage\n");
    EXPECT_EQ(in("Usage\nLimited 1.0\nUsage\n"), "1.0\nUsage\n");
    EXPECT_EQ(in("Limited 1.0\nLimited 2.0\n"), "2.0\n");
    EXPECT_EQ(in("first\nsecond"), "first\nsecond");
    EXPECT_EQ(in("\n1.0"), "\n1.0");
}

TEST_F(VersionOutput, KeepsAByteOrderMark) { EXPECT_EQ(in("\ufeff1.0"), "\ufeff1.0"); }

TEST_F(VersionOutput, OfNothingIsAnEmptyTextAndNotANullOne) {
    for (const char *output : {"", "Limited ", "Limited 1.0 Limited "}) {
        EXPECT_EQ(in(output), "") << output;
    }
}

TEST_F(VersionOutput, ThatIsNoUtf8IsNull) {
    EXPECT_EQ(in("\xff Limited 1.0"), std::nullopt);
    EXPECT_EQ(in("Limited 1.0\n\xff"), std::nullopt);
    EXPECT_EQ(in("Limited 1.0\xc3"), std::nullopt); // a character cut off by the end
    EXPECT_EQ(in("\xff" + std::string(3 * kPiece, 'x') + "Limited 1.0"), std::nullopt);
    EXPECT_EQ(in("Limited 1.0 \xc3\xa9"), "1.0 é");
}

TEST_F(VersionOutput, IsFoundWhereverAPieceEnds) {
    const std::string marker = "Limited ";
    for (size_t before = kPiece - marker.size() - 3; before <= kPiece + 1; ++before) {
        EXPECT_EQ(in(std::string(before, 'x') + marker + "1.2.3.4\n" + std::string(kPiece, 'y')),
                  "1.2.3.4\n" + std::string(kPiece, 'y'))
            << before;
        EXPECT_EQ(in("Limited 9.9" + std::string(before, 'x') + marker + "1.2.3.4"), "1.2.3.4") << before;
    }
}

TEST_F(VersionOutput, MayHaveACharacterAcrossPieces) {
    EXPECT_EQ(in(std::string(kPiece - 1, 'x') + "\xc3\xa9Limited 1.0"), "1.0");
    EXPECT_EQ(in(std::string(kPiece - 9, 'x') + "Limited \xf0\x9f\x98\x80"), "😀");
}

TEST_F(VersionOutput, IsCutWhenItIsLongerThanAnyVersion) {
    constexpr size_t kLongest = 1 << 20;
    EXPECT_EQ(in("Limited " + std::string(300, '1'))->size(), 300U);
    EXPECT_EQ(in("Limited " + std::string(kLongest + 1, '1'))->size(), kLongest);
    EXPECT_EQ(in(std::string(3 * kLongest, '1'))->size(), kLongest);
    EXPECT_EQ(in(std::string(3 * kLongest, '1') + "Limited 2"), "2");
}

TEST_F(VersionOutput, IsPrintedByAProgramWithoutArguments) {
    EXPECT_EQ(printedBy("echo \"Someone Limited $#.0.0.0\""), "0.0.0.0\n");
}

TEST_F(VersionOutput, IsWaitedFor) { EXPECT_EQ(printedBy("printf 'Limited 1.'; sleep 0.1; echo 2"), "1.2\n"); }

TEST_F(VersionOutput, CountsWhateverTheStatusIs) {
    EXPECT_EQ(printedBy("echo Limited 1.2; exit 3"), "1.2\n");
    EXPECT_EQ(printedBy("echo Limited 1.2; kill -SEGV $$"), "1.2\n");
    EXPECT_EQ(printedBy("kill -KILL $$"), "");
}

TEST_F(VersionOutput, DoesNotComeFromStandardError) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(printedBy("echo Limited 9.9 >&2; head -c 1000000 /dev/zero | tr '\\0' e >&2; echo Limited 1.2"), "1.2\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr().size(), std::string("Limited 9.9\n").size() + 1'000'000);
}

TEST_F(VersionOutput, OfAHundredMegabytesTakesLittleMemory) {
    printedBy("echo 1");
    const std::int64_t before = peakMemory();
    EXPECT_EQ(printedBy("head -c 100000000 /dev/zero | tr '\\0' 'x'; echo; echo Limited 1.2"), "1.2\n");
    constexpr std::int64_t kLittle = 16 * 1024; // KiB; the sanitizers keep what was freed
    EXPECT_LT(peakMemory() - before, kLittle);
}

TEST_F(VersionOutput, OfWhatCannotBeStartedRaisesTheLaunchException) {
    const std::string file = home.write("plain", "1.0");
    for (const std::string &path : {home.path("none"), file, home.path(), std::string()}) {
        EXPECT_THAT([&] { versionPrintedBy(path, nativePlatform().tasks); },
                    testing::ThrowsMessage<Exception>(testing::HasSubstr("(launch path not accessible)")))
            << path;
    }
}

TEST_F(VersionOutput, ThatCannotBeReadIsNothing) {
    /// Hands out what is not a pipe.
    class BrokenTasks final : public Tasks {
    public:
        std::optional<int> run(const std::string &, const std::vector<std::string> &,
                               const std::optional<std::string> &) override {
            return std::nullopt;
        }
        bool runUnwaited(const std::string &, const std::vector<std::string> &) override { return false; }
        bool start(const std::string &, const std::vector<std::string> &, const std::optional<std::string> &) override {
            return false;
        }
        std::optional<PipedTask> launch(const std::string &, const std::vector<std::string> &, StandardError) override {
            return PipedTask{7, Descriptor(::open("/dev/null", O_WRONLY | O_CLOEXEC)), {}, {}};
        }
        int terminationStatus(const PipedTask &) override {
            ++waits;
            return 0;
        }
        void abandon(const PipedTask &) override {}
        int waits = 0;
    };
    BrokenTasks tasks;
    EXPECT_EQ(versionPrintedBy("tool", tasks), "");
    EXPECT_EQ(tasks.waits, 1);
}

} // namespace
} // namespace quillmark
