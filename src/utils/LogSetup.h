#pragma once

#include "utils/Log.h"

#include <optional>
#include <string>

namespace quillmark {

/// Sets the logger up: both thresholds by their names, and a new file FOLDER/PRODUCT-yyyy-MM-dd-HHmmss.log.
///
/// \param logFolder its tilde is expanded; an absent one stands for ~/Library/Logs/FAMILY/PRODUCT. A missing folder is
/// created. \returns the path of the log file. An empty or absent level or name ends the process through an assertion.
/// Raises a "Configuration Fault" for an unknown level name or a file that can't be opened, a generic exception for a
/// folder that can't be created.
std::string initLogging3(const std::optional<std::string> &fileLevel, const std::optional<std::string> &stdoutLevel,
                         const std::optional<std::string> &logFolder,
                         const std::optional<std::string> &productFamilyName,
                         const std::optional<std::string> &productName);

/// The same with the file given. Nothing is changed when a level's name is unknown.
std::optional<std::string> initLogging2(const std::optional<std::string> &fileLevelStr,
                                        const std::optional<std::string> &stdoutLevelStr,
                                        const std::optional<std::string> &logFilePath);

/// The same with numbers for the levels.
std::optional<std::string> initLogging(LoggingLevel fileLevel, LoggingLevel stdioLevel,
                                       const std::optional<std::string> &logFilePath);

/// Accepted and ignored: lines always carry a time stamp.
void setLoggingHasDateTimeStamp(bool flag);

/// Remembers folder and name, creates the folder, and makes a path in it with the current local time.
std::string __createLogFilePath(const std::optional<std::string> &folder,
                                const std::optional<std::string> &productName);

/// The same with the folder and the name remembered.
std::string __createStringByRegeneratingLogFilePath();

} // namespace quillmark
