#pragma once

#include "platform/values/Value.h"

#include <optional>
#include <string>

namespace quillmark {

/// Finds out which processes run.
class ProcessUtilities {
public:
    ProcessUtilities() = delete;

    /// Always "en".
    static std::string currentLanguage();

    /// Asks the process table three times, whatever the first answers are: for a command that holds `processName`, for
    /// "Quillmark Mac" and for "QuillmarkCore". True when one of them is there. The name stands between single quotes
    /// in a shell command, unescaped.
    static bool quillmarkCoreAlreadyRunning(const std::string &processName);

    /// The launched-application record of iTunes, and of the Finder.
    static std::optional<Dictionary> getRunningiTunesInfo();
    static std::optional<Dictionary> getRunningFinder();
};

} // namespace quillmark
