#include "utils/LogSetup.h"

#include "platform/Clock.h"
#include "platform/HomeFolder.h"
#include "platform/Platform.h"
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
    QString folder;
    QString productName;
};
constinit PublishedValue<LogFileName> logFileName;

/// The local time as "yyyy-MM-dd-HHmmss".
QString fileTimeStamp() {
    const time_t second = std::chrono::floor<std::chrono::seconds>(platform().clock.now()).time_since_epoch().count();
    struct tm local {};
    ::localtime_r(&second, &local);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d-%H%M%S", &local);
    return QString::fromLatin1(text.data());
}

std::optional<LoggingLevel> levelNamed(const QString &name) {
    for (const LoggingLevel level : {kLogLevelError, kLogLevelNormal, kLogLevelVerbose, kLogLevelDetailed}) {
        if (name == _loggingLevelToString(level)) {
            return level;
        }
    }
    return std::nullopt;
}

LoggingLevel levelOrFault(const QString &name, const char *fault) {
    const auto level = levelNamed(name);
    if (!level) {
        __raiseException1(kConfigurationFault, fault, name);
    }
    return *level;
}

/// The path of the file that follows one which has grown too long; null when its folder is lost.
QString pathOfNextLogFile() {
    try {
        return __createStringByRegeneratingLogFilePath();
    } catch (const Exception &) {
        return {};
    }
}

} // namespace

QString initLogging3(const QString &fileLevel, const QString &stdoutLevel, const QString &logFolder,
                     const QString &productFamilyName, const QString &productName) {
    QUILLMARK_ASSERT(!fileLevel.isNull(), "fileLevel", kUnit);
    QUILLMARK_ASSERT(!fileLevel.isEmpty(), "[fileLevel length]", kUnit);
    QUILLMARK_ASSERT(!stdoutLevel.isNull(), "stdoutLevel", kUnit);
    QUILLMARK_ASSERT(!stdoutLevel.isEmpty(), "[stdoutLevel length]", kUnit);
    QUILLMARK_ASSERT(!productFamilyName.isNull(), "productFamilyName", kUnit);
    QUILLMARK_ASSERT(!productFamilyName.isEmpty(), "[productFamilyName length]", kUnit);
    QUILLMARK_ASSERT(!productName.isNull(), "productName", kUnit);
    QUILLMARK_ASSERT(!productName.isEmpty(), "[productName length]", kUnit);

    const QString folder =
        logFolder.isNull() ? formatted("~/Library/Logs/%@/%@", productFamilyName, productName) : logFolder;
    return initLogging2(fileLevel, stdoutLevel, __createLogFilePath(expandingTilde(folder), productName));
}

QString initLogging2(const QString &fileLevelStr, const QString &stdoutLevelStr, const QString &logFilePath) {
    QUILLMARK_ASSERT(!fileLevelStr.isNull(), "fileLevelStr", kUnit);
    QUILLMARK_ASSERT(!fileLevelStr.isEmpty(), "[fileLevelStr length]", kUnit);
    QUILLMARK_ASSERT(!stdoutLevelStr.isNull(), "stdoutLevelStr", kUnit);
    QUILLMARK_ASSERT(!stdoutLevelStr.isEmpty(), "[stdoutLevelStr length]", kUnit);

    const LoggingLevel fileLevel = levelOrFault(fileLevelStr, "Invalid file logging level \"%@\"");
    const LoggingLevel stdioLevel = levelOrFault(stdoutLevelStr, "Invalid stdout logging level \"%@\"");
    return initLogging(fileLevel, stdioLevel, logFilePath);
}

QString initLogging(LoggingLevel fileLevel, LoggingLevel stdioLevel, const QString &logFilePath) {
    _recordLogIdentity();
    _fileLoggingLevel = fileLevel;
    _stdioLoggingLevel = stdioLevel;
    logVerbose("Logging (file) level %d", fileLevel);
    logVerbose("Logging (stdout) level %d", stdioLevel);
    return _initLogging(logFilePath);
}

void setLoggingHasDateTimeStamp(bool /*flag*/) {}

QString __createLogFilePath(const QString &folder, const QString &productName) {
    logFileName.publish({folder, productName});
    _setLogPathMaker(pathOfNextLogFile);
    ensureFolderPathExists(folder);
    return formatted("%@/%@-%@.log", folder, productName, fileTimeStamp());
}

QString __createStringByRegeneratingLogFilePath() {
    const LogFileName name = logFileName.get() != nullptr ? *logFileName.get() : LogFileName();
    return __createLogFilePath(name.folder, name.productName);
}

} // namespace quillmark
