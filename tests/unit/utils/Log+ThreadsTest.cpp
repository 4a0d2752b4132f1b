#include "support/LogFixture.h"
#include "support/Threads.h"
#include "utils/CurrentThread.h"
#include "utils/LogFile.h"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <set>
#include <unistd.h>

namespace quillmark {
namespace {

class LogThreads : public test::LogFixture {
protected:
    static constexpr int kThreads = 8;
    static constexpr int kLines = 2000;

    static void logFromManyThreads() {
        test::onThreads(kThreads, [](int thread) {
            setCurrentThreadName("t" + std::to_string(thread));
            for (int line = 0; line < kLines; ++line) {
                logNormal("%@ %d end", std::string(static_cast<size_t>(thread) * 40, 'x'), line);
            }
        });
    }
    static std::ptrdiff_t wholeLines(const std::string &contents) {
        static const testing::Matcher<std::string> form =
            testing::MatchesRegex("2024-03-05 [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{4} Launcher\\[311\\] \\(nrm\\) "
                                  "\\[t[0-9]\\] x* [0-9]+ end");
        return std::ranges::count_if(test::linesIn(contents),
                                     [](const std::string &line) { return form.Matches(line); });
    }
};

TEST_F(LogThreads, NoLineIsTornOrLostWhenManyThreadsLogAtOnce) {
    const std::string file = logToFile(kLogLevelNormal);
    logFromManyThreads();
    const std::string contents = contentsOf(file);
    EXPECT_EQ(std::count(contents.begin(), contents.end(), '\n'), kThreads * kLines);
    EXPECT_EQ(wholeLines(contents), kThreads * kLines);
}

TEST_F(LogThreads, NoLineIsLostWhileTheFileIsReplaced) {
    std::set<std::string> files = {logToFile(kLogLevelNormal)};
    std::atomic<bool> done{false};
    std::thread switcher([&] {
        for (int i = 0; !done; ++i) {
            files.insert(*_initLogging(home.path("next-" + std::to_string(i % 50) + ".log")));
        }
    });
    logFromManyThreads();
    done = true;
    switcher.join();
    _flushLog();
    std::ptrdiff_t lines = 0;
    for (const std::string &file : files) {
        lines += wholeLines(test::readAll(file));
    }
    EXPECT_EQ(lines, kThreads * kLines);
}

TEST_F(LogThreads, OneThreadReplacesAGrownFileWhileTheOthersGoOn) {
    const std::string file = initLogging3("normal", "error", home.path(), "Q", "Q");
    ASSERT_EQ(::truncate(file.c_str(), kMaxLogFileLength + 1), 0);
    platform.clock.set(platform.clock.now() + std::chrono::seconds(1));
    logFromManyThreads();
    _flushLog();
    EXPECT_NE(getLogFilePath(), file);
    std::ifstream old(file);
    old.seekg(kMaxLogFileLength + 1);
    EXPECT_EQ(wholeLines({std::istreambuf_iterator(old), {}}) + wholeLines(test::readAll(*getLogFilePath())),
              kThreads * kLines);
}

} // namespace
} // namespace quillmark
