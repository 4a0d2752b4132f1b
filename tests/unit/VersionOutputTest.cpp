#include "tools/VersionOutput.h"
#include "fakes/FakePlatform.h"
#include "support/QtPrinters.h"
#include "support/TemporaryHome.h"
#include "utils/Exception.h"

#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>

namespace quillmark {
namespace {

/// Real programs, run by the real platform.
class VersionOutput : public testing::Test {
protected:
    QString printedBy(const QByteArray &script) {
        const QString path = home.write(QStringLiteral("tool"), "#!/bin/sh\n" + script + '\n');
        EXPECT_EQ(::chmod(QFile::encodeName(path).constData(), 0755), 0);
        return versionPrintedBy(path, nativePlatform().tasks);
    }
    /// The version in an output of these bytes.
    static QString in(const QByteArray &output) {
        test::Transcript transcript;
        test::FakeTasks tasks(transcript);
        tasks.outputs.insert(QStringLiteral("tool"), output);
        return versionPrintedBy(QStringLiteral("tool"), tasks);
    }
    /// The most memory that this process has held, in KiB.
    static qint64 peakMemory() {
        std::ifstream status("/proc/self/status");
        std::string word;
        qint64 amount = 0;
        while (status >> word && word != "VmHWM:") {
        }
        status >> amount;
        return amount;
    }

    static constexpr qsizetype kPiece = 65536; // what is read at once

    test::TemporaryHome home;
};

TEST_F(VersionOutput, IsWhatStandsBehindTheLastMarker) {
    EXPECT_EQ(in("Tool, by Someone Limited 1.14.4.0"), QStringLiteral("1.14.4.0"));
    EXPECT_EQ(in("Limited Limited 1.0 Limited 2.0"), QStringLiteral("2.0"));
    EXPECT_EQ(in("Limited 1.0 Limited"), QStringLiteral("1.0 Limited"));
    EXPECT_EQ(in("LimiLimited 3.0"), QStringLiteral("3.0"));
}

TEST_F(VersionOutput, IsAllOfItWithoutAMarker) {
    EXPECT_EQ(in("1.14.4.0"), QStringLiteral("1.14.4.0"));
    EXPECT_EQ(in("limited 1.0"), QStringLiteral("limited 1.0"));
    EXPECT_EQ(in("Limited\t1.0"), QStringLiteral("Limited\t1.0"));
    EXPECT_EQ(in("x"), QStringLiteral("x"));
}

TEST_F(VersionOutput, IsAllLinesToTheEnd) {
    EXPECT_EQ(in("Limited 1.0\n"), QStringLiteral("1.0\n"));
    EXPECT_EQ(in("Limited 1.0\nUsage\n"), QStringLiteral("1.0\nUsage\n"));
    EXPECT_EQ(in("Usage\nLimited 1.0\nUsage\n"), QStringLiteral("1.0\nUsage\n"));
    EXPECT_EQ(in("Limited 1.0\nLimited 2.0\n"), QStringLiteral("2.0\n"));
    EXPECT_EQ(in("first\nsecond"), QStringLiteral("first\nsecond"));
    EXPECT_EQ(in("\n1.0"), QStringLiteral("\n1.0"));
}

TEST_F(VersionOutput, KeepsAByteOrderMark) {
    EXPECT_EQ(in("\xef\xbb\xbf"
                 "1.0"),
              QStringLiteral("\ufeff1.0"));
}

TEST_F(VersionOutput, OfNothingIsAnEmptyTextAndNotANullOne) {
    for (const char *output : {"", "Limited ", "Limited 1.0 Limited "}) {
        EXPECT_EQ(in(output), QStringLiteral(""));
        EXPECT_FALSE(in(output).isNull()) << output;
    }
}

TEST_F(VersionOutput, ThatIsNoUtf8IsNull) {
    EXPECT_TRUE(in("\xff Limited 1.0").isNull());
    EXPECT_TRUE(in("Limited 1.0\n\xff").isNull());
    EXPECT_TRUE(in("Limited 1.0\xc3").isNull()); // a character cut off by the end
    EXPECT_TRUE(in("\xff" + QByteArray(3 * kPiece, 'x') + "Limited 1.0").isNull());
    EXPECT_EQ(in("Limited 1.0 \xc3\xa9"), QStringLiteral("1.0 é"));
}

TEST_F(VersionOutput, IsFoundWhereverAPieceEnds) {
    const QByteArray marker = "Limited ";
    for (qsizetype before = kPiece - marker.size() - 3; before <= kPiece + 1; ++before) {
        EXPECT_EQ(in(QByteArray(before, 'x') + marker + "1.2.3.4\n" + QByteArray(kPiece, 'y')),
                  QStringLiteral("1.2.3.4\n") + QString(kPiece, u'y'))
            << before;
        EXPECT_EQ(in("Limited 9.9" + QByteArray(before, 'x') + marker + "1.2.3.4"), QStringLiteral("1.2.3.4"))
            << before;
    }
}

TEST_F(VersionOutput, MayHaveACharacterAcrossPieces) {
    EXPECT_EQ(in(QByteArray(kPiece - 1, 'x') + "\xc3\xa9Limited 1.0"), QStringLiteral("1.0"));
    EXPECT_EQ(in(QByteArray(kPiece - 9, 'x') + "Limited \xf0\x9f\x98\x80"), QStringLiteral("😀"));
}

TEST_F(VersionOutput, IsCutWhenItIsLongerThanAnyVersion) {
    constexpr qsizetype kLongest = 1 << 20;
    EXPECT_EQ(in("Limited " + QByteArray(300, '1')).size(), 300);
    EXPECT_EQ(in("Limited " + QByteArray(kLongest + 1, '1')).size(), kLongest);
    EXPECT_EQ(in(QByteArray(3 * kLongest, '1')).size(), kLongest);
    EXPECT_EQ(in(QByteArray(3 * kLongest, '1') + "Limited 2"), QStringLiteral("2"));
}

TEST_F(VersionOutput, IsPrintedByAProgramWithoutArguments) {
    EXPECT_EQ(printedBy("echo \"Someone Limited $#.0.0.0\""), QStringLiteral("0.0.0.0\n"));
}

TEST_F(VersionOutput, IsWaitedFor) {
    EXPECT_EQ(printedBy("printf 'Limited 1.'; sleep 0.1; echo 2"), QStringLiteral("1.2\n"));
}

TEST_F(VersionOutput, CountsWhateverTheStatusIs) {
    EXPECT_EQ(printedBy("echo Limited 1.2; exit 3"), QStringLiteral("1.2\n"));
    EXPECT_EQ(printedBy("echo Limited 1.2; kill -SEGV $$"), QStringLiteral("1.2\n"));
    EXPECT_EQ(printedBy("kill -KILL $$"), QStringLiteral(""));
}

TEST_F(VersionOutput, DoesNotComeFromStandardError) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(printedBy("echo Limited 9.9 >&2; head -c 1000000 /dev/zero | tr '\\0' e >&2; echo Limited 1.2"),
              QStringLiteral("1.2\n"));
    const std::string passedOn = testing::internal::GetCapturedStderr();
    EXPECT_EQ(passedOn.size(), std::string("Limited 9.9\n").size() + 1'000'000);
}

TEST_F(VersionOutput, OfAHundredMegabytesTakesLittleMemory) {
    printedBy("echo 1");
    const qint64 before = peakMemory();
    EXPECT_EQ(printedBy("head -c 100000000 /dev/zero | tr '\\0' 'x'; echo; echo Limited 1.2"), QStringLiteral("1.2\n"));
    constexpr qint64 kLittle = 16 * 1024; // KiB; the sanitizers keep what was freed
    EXPECT_LT(peakMemory() - before, kLittle);
}

TEST_F(VersionOutput, OfWhatCannotBeStartedRaisesTheLaunchException) {
    const QString file = home.write(QStringLiteral("plain"), "1.0");
    for (const QString &path : {home.path(QStringLiteral("none")), file, home.path(), QString()}) {
        try {
            versionPrintedBy(path, nativePlatform().tasks);
            ADD_FAILURE() << qPrintable(path) << " was started";
        } catch (const Exception &exception) {
            EXPECT_EQ(exception.reason(), QStringLiteral("launch path not accessible"));
        }
    }
}

TEST_F(VersionOutput, ThatCannotBeReadIsNothing) {
    /// Hands out a pipe that is none.
    class BrokenTasks final : public Tasks {
    public:
        std::optional<int> run(const QString &, const QStringList &, const QString &) override { return std::nullopt; }
        bool runUnwaited(const QString &, const QStringList &) override { return false; }
        bool start(const QString &, const QStringList &, const QString &) override { return false; }
        std::optional<PipedTask> launch(const QString &, const QStringList &, StandardError) override {
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
    EXPECT_EQ(versionPrintedBy(QStringLiteral("tool"), tasks), QStringLiteral(""));
    EXPECT_EQ(tasks.waits, 1);
}

} // namespace
} // namespace quillmark
