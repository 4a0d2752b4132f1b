#include "tools/ProcessUtilities.h"

#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/Tasks.h"
#include "tools/LaunchedApplications.h"
#include "utils/FormattedText.h"

namespace quillmark {

std::string ProcessUtilities::currentLanguage() { return "en"; }

bool ProcessUtilities::quillmarkCoreAlreadyRunning(const std::string &processName) {
    // The blanks before the redirections differ, and stay so.
    const std::string pipelines[] = {
        formatted("ps ax -o comm | fgrep '%@' | grep -v grep | grep -v relaunchqm > /dev/null", processName),
        formatted("ps ax -o comm | grep '%@ %@' | grep -v grep >/dev/null", "Quillmark", "Mac"),
        formatted("ps ax -o comm | grep '%@%@' | grep -v grep >/dev/null", "Quillmark", "Core"),
    };
    const std::string helpers = helpersFolder(platform().mainBundle.path());
    bool isRunning = false;
    for (const std::string &pipeline : pipelines) {
        const auto status = platform().tasks.run("/bin/sh", {"-c", pipeline}, helpers);
        isRunning = status == 0 || isRunning;
    }
    return isRunning;
}

std::optional<Dictionary> ProcessUtilities::getRunningiTunesInfo() { return launchedApplication("com.apple.iTunes"); }

std::optional<Dictionary> ProcessUtilities::getRunningFinder() { return launchedApplication("com.apple.finder"); }

} // namespace quillmark
