#include "support/LogFixture.h"
#include "utils/CurrentThread.h"

#include <QRegularExpression>
#include <thread>
#include <unistd.h>
#include <vector>

namespace quillmark {
namespace {

class LogThreads : public test::LogFixture {
protected:
    static constexpr int kThreads = 8;
    static constexpr int kLines = 2000;

    static void logFromManyThreads() {
        std::vector<std::thread> threads;
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([thread] {
                setCurrentThreadName("t" + std::to_string(thread));
                for (int line = 0; line < kLines; ++line) {
                    logNormal("%@ %d end", QString(thread * 40, u'x'), line);
                }
            });
        }
        for (std::thread &thread : threads) {
            thread.join();
        }
    }
    static int wholeLines(const QByteArray &contents) {
        static const QRegularExpression form(QStringLiteral(
            "^2024-03-05 \\d\\d:\\d\\d:\\d\\d\\.\\d{4} Launcher\\[311\\] \\(nrm\\) \\[t\\d\\] x* \\d+ end$"));
        int whole = 0;
        for (const QByteArray &line : contents.split('\n')) {
            whole += form.match(QString::fromUtf8(line)).hasMatch() ? 1 : 0;
        }
        return whole;
    }
};

TEST_F(LogThreads, NoLineIsTornOrLostWhenManyThreadsLogAtOnce) {
    const QString file = logToFile(kLogLevelNormal);
    logFromManyThreads();
    const QByteArray contents = contentsOf(file);
    EXPECT_EQ(contents.count('\n'), kThreads * kLines);
    EXPECT_EQ(wholeLines(contents), kThreads * kLines);
}

TEST_F(LogThreads, NoLineIsLostWhileTheFileIsReplaced) {
    const QString first = logToFile(kLogLevelNormal);
    std::atomic<bool> done{false};
    QStringList files = {first};
    std::thread switcher([&] {
        for (int i = 0; !done; ++i) {
            files << _initLogging(home.path(QStringLiteral("next-%1.log").arg(i % 50)));
        }
    });
    logFromManyThreads();
    done = true;
    switcher.join();
    _flushLog();
    files.removeDuplicates();
    int lines = 0;
    for (const QString &file : files) {
        lines += wholeLines(test::readAll(file));
    }
    EXPECT_EQ(lines, kThreads * kLines);
}

TEST_F(LogThreads, OneThreadReplacesAGrownFileWhileTheOthersGoOn) {
    const QString file = initLogging3(QStringLiteral("normal"), QStringLiteral("error"), home.path(),
                                      QStringLiteral("Q"), QStringLiteral("Q"));
    ASSERT_EQ(::truncate(QFile::encodeName(file).constData(), kMaxLogFileLength + 1), 0);
    platform.clock.set(platform.clock.now() + std::chrono::seconds(1));
    logFromManyThreads();
    _flushLog();
    EXPECT_NE(getLogFilePath(), file);
    QFile old(file);
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    old.seek(kMaxLogFileLength + 1);
    EXPECT_EQ(wholeLines(old.readAll()) + wholeLines(test::readAll(getLogFilePath())), kThreads * kLines);
}

} // namespace
} // namespace quillmark
