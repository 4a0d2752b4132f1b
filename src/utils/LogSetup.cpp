#include "utils/LogSetup.h"

#include "platform/Clock.h"
#include "platform/Platform.h"
#include "platform/files/HomeFolder.h"
#include "utils/Assert.h"
#include "utils/Exception.h"
#include "utils/Folders.h"
#include "utils/FormattedText.h"
#include "utils/PublishedValue.h"
#include "utils/Raise.h"

#include <array>
#include <ctime>
#include <optional>

namespace quillmark {

namespace {

constexpr const char *kUnit = "utils";

struct LogFileName {
    std::optional<std::string> folder;
    std::optional<std::string> productName;
};
constinit PublishedValue<LogFileName> logFileName;

/// The local time as "yyyy-MM-dd-HHmmss".
std::string fileTimeStamp() {
    const time_t second = std::chrono::floor<std::chrono::seconds>(platform().clock.now()).time_since_epoch().count();
    struct tm local {};
    ::localtime_r(&second, &local);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d-%H%M%S", &local);
    return text.data();
}

std::optional<LoggingLevel> levelNamed(const std::string &name) {
    for (const LoggingLevel level : {kLogLevelError, kLogLevelNormal, kLogLevelVerbose, kLogLevelDetailed}) {
        if (name == _loggingLevelToString(level)) {
            return level;
        }
    }
    return std::nullopt;
}

LoggingLevel levelOrFault(const std::string &name, const char *fault) {
    const auto level = levelNamed(name);
    if (!level) {
        __raiseException1(kConfigurationFault, fault, name);
    }
    return *level;
}

/// The path of the file that follows one which has grown too long; absent when its folder is lost.
std::optional<std::string> pathOfNextLogFile() {
    try {
        return __createStringByRegeneratingLogFilePath();
    } catch (const Exception &) {
        return std::nullopt;
    }
}

} // namespace

std::string initLogging3(const std::optional<std::string> &fileLevel, const std::optional<std::string> &stdoutLevel,
                         const std::optional<std::string> &logFolder,
                         const std::optional<std::string> &productFamilyName,
                         const std::optional<std::string> &productName) {
    QUILLMARK_ASSERT(fileLevel, "fileLevel", kUnit);
    QUILLMARK_ASSERT(!fileLevel->empty(), "[fileLevel length]", kUnit);
    QUILLMARK_ASSERT(stdoutLevel, "stdoutLevel", kUnit);
    QUILLMARK_ASSERT(!stdoutLevel->empty(), "[stdoutLevel length]", kUnit);
    QUILLMARK_ASSERT(productFamilyName, "productFamilyName", kUnit);
    QUILLMARK_ASSERT(!productFamilyName->empty(), "[productFamilyName length]", kUnit);
    QUILLMARK_ASSERT(productName, "productName", kUnit);
    QUILLMARK_ASSERT(!productName->empty(), "[productName length]", kUnit);

    const std::string folder = logFolder.value_or("~/Library/Logs/" + *productFamilyName + '/' + *productName);
    std::string file = __createLogFilePath(expandingTilde(folder), productName);
    initLogging2(fileLevel, stdoutLevel, file);
    return file;
}

std::optional<std::string> initLogging2(const std::optional<std::string> &fileLevelStr,
                                        const std::optional<std::string> &stdoutLevelStr,
                                        const std::optional<std::string> &logFilePath) {
    QUILLMARK_ASSERT(fileLevelStr, "fileLevelStr", kUnit);
    QUILLMARK_ASSERT(!fileLevelStr->empty(), "[fileLevelStr length]", kUnit);
    QUILLMARK_ASSERT(stdoutLevelStr, "stdoutLevelStr", kUnit);
    QUILLMARK_ASSERT(!stdoutLevelStr->empty(), "[stdoutLevelStr length]", kUnit);

    const LoggingLevel fileLevel = levelOrFault(*fileLevelStr, "Invalid file logging level \"%@\"");
    const LoggingLevel stdioLevel = levelOrFault(*stdoutLevelStr, "Invalid stdout logging level \"%@\"");
    return initLogging(fileLevel, stdioLevel, logFilePath);
}

std::optional<std::string> initLogging(LoggingLevel fileLevel, LoggingLevel stdioLevel,
                                       const std::optional<std::string> &logFilePath) {
    _recordLogIdentity();
    _fileLoggingLevel = fileLevel;
    _stdioLoggingLevel = stdioLevel;
    logVerbose("Logging (file) level %d", fileLevel);
    logVerbose("Logging (stdout) level %d", stdioLevel);
    return _initLogging(logFilePath);
}

void setLoggingHasDateTimeStamp(bool /*flag*/) {}

std::string __createLogFilePath(const std::optional<std::string> &folder,
                                const std::optional<std::string> &productName) {
    logFileName.publish({folder, productName});
    _setLogPathMaker(pathOfNextLogFile);
    ensureFolderPathExists(folder);
    return formatted("%@/%@-%@.log", folder, productName, fileTimeStamp());
}

std::string __createStringByRegeneratingLogFilePath() {
    const LogFileName name = logFileName.get() != nullptr ? *logFileName.get() : LogFileName();
    return __createLogFilePath(name.folder, name.productName);
}

} // namespace quillmark
