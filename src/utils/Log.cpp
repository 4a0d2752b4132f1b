#include "utils/Log.h"

#include "platform/Clock.h"
#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "platform/process/AtEnd.h"
#include "platform/process/Problem.h"
#include "utils/CurrentThread.h"
#include "utils/ErrorText.h"
#include "utils/Exception.h"
#include "utils/LogFile.h"
#include "utils/PublishedValue.h"
#include "utils/Raise.h"

#include <array>
#include <ctime>
#include <fmt/format.h>

namespace quillmark {

namespace {

constexpr std::array<const char *, 4> kLevelNames = {"error", "normal", "verbose", "detailed"};

constinit LogFile logFile;
constinit PublishedValue<std::optional<std::string>> logFilePath;
/// "NAME[PID] "
constinit PublishedValue<std::string> identity;
constinit std::atomic<std::int64_t> examineLengthInNLines{0};
constinit std::atomic<std::optional<std::string> (*)()> logPathMaker{nullptr};
std::atomic<FILE *> errorStream{stderr};
std::atomic<FILE *> otherStream{stdout};

constexpr std::string_view tagOf(LoggingLevel level) {
    switch (level) {
    case kLogLevelError:
        return "(ERR) ";
    case kLogLevelVerbose:
        return "(vrb) ";
    case kLogLevelDetailed:
        return "(dtl) ";
    default:
        return "(nrm) ";
    }
}

/// Appends the local time as "yyyy-MM-dd HH:mm:ss.SSSS ".
void appendTimeStamp(fmt::memory_buffer &line) {
    using namespace std::chrono;
    constexpr size_t kSecondLength = 20; // up to the point
    thread_local time_t cachedSecond = -1;
    thread_local std::array<char, 32> cachedText{};

    const Clock::Time now = platform().clock.now();
    const auto second = floor<seconds>(now);
    if (const time_t count = second.time_since_epoch().count(); count != cachedSecond) {
        struct tm local {};
        ::localtime_r(&count, &local);
        std::strftime(cachedText.data(), cachedText.size(), "%Y-%m-%d %H:%M:%S.", &local);
        cachedSecond = count;
    }
    auto fraction = (now - second).count() / 100; // four digits
    std::array<char, 5> digits = {'0', '0', '0', '0', ' '};
    for (size_t i = 4; i-- > 0; fraction /= 10) {
        digits[i] = static_cast<char>('0' + fraction % 10);
    }
    line.append(cachedText.data(), cachedText.data() + kSecondLength);
    line.append(digits.data(), digits.data() + digits.size());
}

const std::string &processIdentity() {
    if (identity.get() == nullptr) {
        _recordLogIdentity();
    }
    return *identity.get();
}

void beginNewFile() {
    if (const auto makePath = logPathMaker.load(std::memory_order_acquire)) {
        if (const auto path = makePath()) {
            _initLogging(path);
        }
    }
}

void writeToFile(const char *line) {
    FILE *stream = logFile.stream();
    if (stream == nullptr) {
        return;
    }
    std::fputs(line, stream);
    // Only the thread that takes the count from 0 measures; it counts from the start again when it is done.
    if (examineLengthInNLines.fetch_sub(1, std::memory_order_relaxed) == 0) {
        const AtEnd restart(
            [] { examineLengthInNLines.store(kExamineLogFileLengthEveryNLines, std::memory_order_relaxed); });
        if (hasGrownTooLong(stream)) {
            beginNewFile();
        }
    }
}

void writeLine(LoggingLevel level, std::string_view message, bool endLine) {
    fmt::memory_buffer line;
    appendTimeStamp(line);
    line.append(processIdentity());
    line.append(tagOf(level));
    line.append(currentThreadLogPrefix());
    line.append(message);
    if (endLine) {
        line.push_back('\n');
    }
    line.push_back('\0');
    if (_fileLoggingLevel.load(std::memory_order_relaxed) >= level) {
        writeToFile(line.data());
    }
    if (_stdioLoggingLevel.load(std::memory_order_relaxed) >= level) {
        FILE *stream = (level == kLogLevelError ? errorStream : otherStream).load(std::memory_order_relaxed);
        if (stream != nullptr) {
            std::fputs(line.data(), stream);
        }
    }
}

} // namespace

std::string _loggingLevelToString(LoggingLevel level) {
    if (level >= kLevelNames.size()) {
        __raiseException1(kConfigurationFault, "Invalid logging level %d", level);
    }
    return kLevelNames[level];
}

std::string loggingLevelStrFile() { return _loggingLevelToString(_fileLoggingLevel); }
std::string loggingLevelStrStdio() { return _loggingLevelToString(_stdioLoggingLevel); }

void _log(LoggingLevel level, const FormatText &format, FormatArguments arguments) {
    if (!_isLogLevelVisible(level) || format.isAbsent()) {
        return;
    }
    const std::string_view text = format.view();
    const bool endLine = !text.ends_with('\n');
    if (arguments.empty() && text.find('%') == std::string_view::npos) {
        writeLine(level, text, endLine);
        return;
    }
    const auto message = tryFormat(format, arguments);
    writeLine(level, message ? std::string_view(*message) : text, endLine);
    if (!message) {
        writeLine(kLogLevelError, "The line above could not be formatted: its format does not match its arguments",
                  true);
    }
}

void logNSError(const Error &error) { logError("Error:\n%@", nserrorToString(error)); }

void logErrorException(const Exception &exception) { logError("%@", errorExceptionToString(exception)); }

void logReportedProblems() {
    setProblemReporter([](const std::string &sentence) { logError("%@", sentence); });
}

void _printLine(bool toStandardError, const FormatText &format, FormatArguments arguments) {
    if (format.isAbsent()) {
        return;
    }
    const std::string message = tryFormat(format, arguments).value_or(std::string(format.view())) + '\n';
    std::fputs(message.c_str(), toStandardError ? stderr : stdout);
}

std::optional<std::string> getLogFilePath() { return logFilePath.get() != nullptr ? *logFilePath.get() : std::nullopt; }

std::optional<std::string> _initLogging(const std::optional<std::string> &path) {
    _recordLogIdentity();
    logFilePath.publish(path);
    if (!path) {
        logFile.close();
    } else if (!logFile.open(*path)) {
        __raiseException1(kConfigurationFault, "Failed to open log file \"%@\" for writing", path);
    }
    return path;
}

void _recordLogIdentity() {
    const SystemInfo &system = platform().systemInfo;
    identity.publish(system.processName() + '[' + std::to_string(system.processIdentifier()) + "] ");
}

void _setLogPathMaker(std::optional<std::string> (*makePath)()) {
    logPathMaker.store(makePath, std::memory_order_release);
}

void _setStandardStreams(FILE *error, FILE *other) {
    errorStream.store(error, std::memory_order_relaxed);
    otherStream.store(other, std::memory_order_relaxed);
}

void _flushLog() {
    if (FILE *stream = logFile.stream()) {
        std::fflush(stream);
    }
    std::fflush(stdout);
}

} // namespace quillmark
