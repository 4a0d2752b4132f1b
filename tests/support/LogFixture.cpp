#include "support/LogFixture.h"
#include "utils/ReplaceAll.h"

#include <ctime>

namespace quillmark::test {

namespace {

void reset() {
    _initLogging(std::nullopt);
    _fileLoggingLevel = kLogLevelNormal;
    _stdioLoggingLevel = kLogLevelNormal;
    _setStandardStreams(stderr, stdout);
}

} // namespace

LogFixture::LogFixture() {
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    reset();
    platform.clock.set(Clock::Time(std::chrono::microseconds(1709648102123456))); // 2024-03-05 14:15:02.123456
}

LogFixture::~LogFixture() { reset(); }

std::string LogFixture::contentsOf(const std::string &path) {
    _flushLog();
    return readAll(path);
}

Lines LogFixture::messagesOf(const std::string &path) {
    Lines messages = linesOf(path);
    for (std::string &line : messages) {
        line.erase(0, line.find(' ') + 1);
    }
    return messages;
}

Lines LogFixture::linesOf(const std::string &path) {
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

Lines LogFixture::withTilde(Lines lines) const {
    for (std::string &line : lines) {
        replaceAll(line, home.path(), "~");
    }
    return lines;
}

} // namespace quillmark::test
