#pragma once

#include "utils/Log.h"

namespace quillmark {

/// Sets the logger up: both thresholds by their names, and a new file FOLDER/PRODUCT-yyyy-MM-dd-HHmmss.log.
///
/// \param logFolder its tilde is expanded; null stands for ~/Library/Logs/FAMILY/PRODUCT. A missing folder is created.
/// \returns the path of the log file.
/// An empty or null level or name ends the process through an assertion. Raises a "Configuration Fault" for an unknown
/// level name or a file that can't be opened, a generic exception for a folder that can't be created.
QString initLogging3(const QString &fileLevel, const QString &stdoutLevel, const QString &logFolder,
                     const QString &productFamilyName, const QString &productName);

/// The same with the file given. Nothing is changed when a level's name is unknown.
QString initLogging2(const QString &fileLevelStr, const QString &stdoutLevelStr, const QString &logFilePath);

/// The same with numbers for the levels.
QString initLogging(LoggingLevel fileLevel, LoggingLevel stdioLevel, const QString &logFilePath);

/// Accepted and ignored: lines always carry a time stamp.
void setLoggingHasDateTimeStamp(bool flag);

/// Remembers folder and name, creates the folder, and makes a path in it with the current local time.
QString __createLogFilePath(const QString &folder, const QString &productName);

/// The same with the folder and the name remembered.
QString __createStringByRegeneratingLogFilePath();

} // namespace quillmark
