#pragma once

#include "fakes/FakePlatform.h"
#include "support/QtPrinters.h"
#include "support/TemporaryHome.h"
#include "utils/LogSetup.h"

#include <ctime>
#include <gtest/gtest.h>

namespace quillmark::test {

/// The process's logger, as new before and after each test: both levels normal, no file, fake platform, UTC.
class LogFixture : public testing::Test {
protected:
    LogFixture() {
        qputenv("TZ", "UTC");
        ::tzset();
        reset();
        platform.clock.set(Clock::Time(std::chrono::microseconds(1709648102123456))); // 2024-03-05 14:15:02.123456
    }
    ~LogFixture() override { reset(); }

    /// Sends the log to a file of the test's own at the given level; nothing but errors reaches the standard streams.
    QString logToFile(LoggingLevel fileLevel, LoggingLevel stdioLevel = kLogLevelError) {
        return initLogging(fileLevel, stdioLevel, home.path(QStringLiteral("test.log")));
    }
    static QByteArray contentsOf(const QString &path) {
        _flushLog();
        return readAll(path);
    }
    /// The messages of a log file, without what stands before them.
    static QStringList messagesOf(const QString &path) {
        QStringList messages;
        for (const QString &line : linesOf(path)) {
            messages << line.mid(line.indexOf(u' ') + 1);
        }
        return messages;
    }
    /// The same, each with its level before it: "vrb Launching".
    static QStringList linesOf(const QString &path) {
        QStringList lines;
        for (const QByteArray &line : contentsOf(path).split('\n')) {
            constexpr qsizetype kLevel = 3; // letters
            const qsizetype behindLevel = line.indexOf(") [");
            const qsizetype prefix = line.indexOf("] ", behindLevel);
            if (behindLevel >= kLevel && prefix >= 0) {
                lines << QString::fromUtf8(line.mid(behindLevel - kLevel, kLevel) + line.mid(prefix + 1));
            }
        }
        return lines;
    }

    FakePlatform platform;
    TemporaryHome home;

private:
    static void reset() {
        _initLogging(QString());
        _fileLoggingLevel = kLogLevelNormal;
        _stdioLoggingLevel = kLogLevelNormal;
        _setStandardStreams(stderr, stdout);
    }
};

} // namespace quillmark::test
