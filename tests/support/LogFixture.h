#pragma once

#include "fakes/FakePlatform.h"
#include "support/TemporaryHome.h"
#include "utils/LogSetup.h"
#include "utils/ReplaceAll.h"

#include <ctime>

namespace quillmark::test {

/// The process's logger, as new before and after each test: both levels normal, no file, fake platform, UTC.
class LogFixture : public testing::Test {
protected:
    LogFixture() {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
        reset();
        platform.clock.set(Clock::Time(std::chrono::microseconds(1709648102123456))); // 2024-03-05 14:15:02.123456
    }
    ~LogFixture() override { reset(); }

    /// Sends the log to a file of the test's own at the given level; nothing but errors reaches the standard streams.
    std::string logToFile(LoggingLevel fileLevel, LoggingLevel stdioLevel = kLogLevelError) {
        return initLogging(fileLevel, stdioLevel, home.path("test.log")).value();
    }
    static std::string contentsOf(const std::string &path) {
        _flushLog();
        return readAll(path);
    }
    /// The messages of a log file, without what stands before them.
    static Lines messagesOf(const std::string &path) {
        Lines messages = linesOf(path);
        for (std::string &line : messages) {
            line.erase(0, line.find(' ') + 1);
        }
        return messages;
    }
    /// The same, each with its level before it: "vrb Launching".
    static Lines linesOf(const std::string &path) {
        Lines lines;
        for (const std::string &line : linesIn(contentsOf(path))) {
            constexpr size_t kLevel = 3; // letters
            const size_t behindLevel = line.find(") [");
            const size_t prefix = line.find("] ", behindLevel);
            if (behindLevel >= kLevel && prefix != std::string::npos) {
                lines.push_back(line.substr(behindLevel - kLevel, kLevel) + line.substr(prefix + 1));
            }
        }
        return lines;
    }
    /// The lines with "~" in the place of the home folder's path.
    Lines withTilde(Lines lines) const {
        for (std::string &line : lines) {
            replaceAll(line, home.path(), "~");
        }
        return lines;
    }

    FakePlatform platform;
    TemporaryHome home;

private:
    static void reset() {
        _initLogging(std::nullopt);
        _fileLoggingLevel = kLogLevelNormal;
        _stdioLoggingLevel = kLogLevelNormal;
        _setStandardStreams(stderr, stdout);
    }
};

} // namespace quillmark::test
