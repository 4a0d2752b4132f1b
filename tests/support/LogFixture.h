#pragma once

#include "fakes/FakePlatform.h"
#include "support/TemporaryHome.h"
#include "utils/LogSetup.h"

#include <gtest/gtest.h>

namespace quillmark::test {

/// The process's logger, as new before and after each test: both levels normal, no file, fake platform, UTC.
class LogFixture : public testing::Test {
protected:
    LogFixture();
    ~LogFixture() override;

    /// Sends the log to a file of the test's own at the given level; nothing but errors reaches the standard streams.
    std::string logToFile(LoggingLevel fileLevel, LoggingLevel stdioLevel = kLogLevelError) {
        return initLogging(fileLevel, stdioLevel, home.path("test.log")).value();
    }
    static std::string contentsOf(const std::string &path);
    /// The messages of a log file, without what stands before them.
    static Lines messagesOf(const std::string &path);
    /// The same, each with its level before it: "vrb Launching".
    static Lines linesOf(const std::string &path);
    /// The lines with "~" in the place of the home folder's path.
    Lines withTilde(Lines lines) const;

    FakePlatform platform;
    TemporaryHome home;
};

} // namespace quillmark::test
