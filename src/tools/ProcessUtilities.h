#pragma once

#include <QString>
#include <QVariantMap>
#include <optional>

namespace quillmark {

/// Finds out which processes run.
class ProcessUtilities {
public:
    ProcessUtilities() = delete;

    /// Always "en".
    static QString currentLanguage();

    /// Asks the process table three times, whatever the first answers are: for a command that holds `processName`, for
    /// "Quillmark Mac" and for "QuillmarkCore". True when one of them is there. The name stands between single quotes
    /// in a shell command, unescaped.
    static bool quillmarkCoreAlreadyRunning(const QString &processName);

    /// The launched-application record of iTunes, and of the Finder.
    static std::optional<QVariantMap> getRunningiTunesInfo();
    static std::optional<QVariantMap> getRunningFinder();
};

} // namespace quillmark
