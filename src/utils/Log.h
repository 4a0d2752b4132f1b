#pragma once

#include "utils/Format.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

namespace quillmark {

class Exception;
struct Error;

// One logger for the process, with two sinks: a log file and the standard streams. Each sink takes the lines whose
// level is not above its own. Any thread may log; nothing here takes a lock.

/// 0 "error", 1 "normal", 2 "verbose", 3 "detailed".
using LoggingLevel = std::uint32_t;

inline constexpr LoggingLevel kLogLevelError = 0;
inline constexpr LoggingLevel kLogLevelNormal = 1;
inline constexpr LoggingLevel kLogLevelVerbose = 2;
inline constexpr LoggingLevel kLogLevelDetailed = 3;

/// The sinks' levels. They change through the initialisers of LogSetup.h alone.
inline constinit std::atomic<LoggingLevel> _fileLoggingLevel{kLogLevelNormal};
inline constinit std::atomic<LoggingLevel> _stdioLoggingLevel{kLogLevelNormal};

/// True when one of the sinks takes lines of this level.
inline bool _isLogLevelVisible(LoggingLevel level) {
    return _stdioLoggingLevel.load(std::memory_order_relaxed) >= level ||
           _fileLoggingLevel.load(std::memory_order_relaxed) >= level;
}
inline bool isLogVerboseVisible() { return _isLogLevelVisible(kLogLevelVerbose); }
inline bool isLogDetailVisible() { return _isLogLevelVisible(kLogLevelDetailed); }

/// The configuration's name of a level. Raises a "Configuration Fault" for any other number.
std::string _loggingLevelToString(LoggingLevel level);
std::string loggingLevelStrFile();
std::string loggingLevelStrStdio();

/// The common writer; the four below test the level before anything is evaluated.
void _log(LoggingLevel level, const FormatText &format, FormatArguments arguments);

/// A line of printf-style text with %@; a line end is added unless the format ends in one.
template <class Format, class... Arguments>
void logError(const Format &format, const Arguments &...arguments) {
    if (_isLogLevelVisible(kLogLevelError)) {
        _log(kLogLevelError, format, FormatArgumentArray<Arguments...>{FormatArgument(arguments)...});
    }
}
template <class Format, class... Arguments>
void logNormal(const Format &format, const Arguments &...arguments) {
    if (_isLogLevelVisible(kLogLevelNormal)) {
        _log(kLogLevelNormal, format, FormatArgumentArray<Arguments...>{FormatArgument(arguments)...});
    }
}
template <class Format, class... Arguments>
void logVerbose(const Format &format, const Arguments &...arguments) {
    if (_isLogLevelVisible(kLogLevelVerbose)) {
        _log(kLogLevelVerbose, format, FormatArgumentArray<Arguments...>{FormatArgument(arguments)...});
    }
}
template <class Format, class... Arguments>
void logDetail(const Format &format, const Arguments &...arguments) {
    if (_isLogLevelVisible(kLogLevelDetailed)) {
        _log(kLogLevelDetailed, format, FormatArgumentArray<Arguments...>{FormatArgument(arguments)...});
    }
}

void logNSError(const Error &error);
void logErrorException(const Exception &exception);

/// Logs as errors, from now on, what the platform's backends report.
void logReportedProblems();

void _printLine(bool toStandardError, const FormatText &format, FormatArguments arguments);

/// The message and a line end on standard output, whatever the levels are.
template <class Format, class... Arguments>
void NSPrintf(const Format &format, const Arguments &...arguments) {
    _printLine(false, format, FormatArgumentArray<Arguments...>{FormatArgument(arguments)...});
}
/// The same on standard error.
template <class Format, class... Arguments>
void NSPrintErrf(const Format &format, const Arguments &...arguments) {
    _printLine(true, format, FormatArgumentArray<Arguments...>{FormatArgument(arguments)...});
}

/// The path of the current log file; absent before one was opened.
std::optional<std::string> getLogFilePath();

/// Sends the log to another file, appending to it; with an absent path to none. The old file is closed first.
/// Raises a "Configuration Fault" when the file can't be opened; the path is recorded all the same.
/// \returns the current path.
std::optional<std::string> _initLogging(const std::optional<std::string> &path);

/// Looks up the process's name and id again, for the lines to come.
void _recordLogIdentity();

/// Lines between two looks at the length of the file (kMaxLogFileLength): it is measured at the first line, then at
/// every 501st.
inline constexpr std::int64_t kExamineLogFileLengthEveryNLines = 500;

/// What makes the path of the file that replaces one which has grown too long; an absent path keeps the old file.
void _setLogPathMaker(std::optional<std::string> (*makePath)());

/// Where the second sink writes: lines of the error level, and all others. Null leaves them out. Standard error and
/// standard output at first; for programs whose standard output carries results.
void _setStandardStreams(FILE *error, FILE *other);

/// Writes out what the streams still hold.
void _flushLog();

} // namespace quillmark
