#include "tools/ProcessUtilities.h"

#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/Tasks.h"
#include "tools/Applications.h"
#include "utils/FormattedText.h"

namespace quillmark {

QString ProcessUtilities::currentLanguage() { return QStringLiteral("en"); }

bool ProcessUtilities::quillmarkCoreAlreadyRunning(const QString &processName) {
    // The blanks before the redirections differ, and stay so.
    const QString pipelines[] = {
        formatted("ps ax -o comm | fgrep '%@' | grep -v grep | grep -v relaunchqm > /dev/null", processName),
        formatted("ps ax -o comm | grep '%@ %@' | grep -v grep >/dev/null", "Quillmark", "Mac"),
        formatted("ps ax -o comm | grep '%@%@' | grep -v grep >/dev/null", "Quillmark", "Core"),
    };
    const QString helpers = helpersFolder(platform().mainBundle.path());
    bool isRunning = false;
    for (const QString &pipeline : pipelines) {
        const auto status = platform().tasks.run(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), pipeline}, helpers);
        isRunning = status == 0 || isRunning;
    }
    return isRunning;
}

std::optional<QVariantMap> ProcessUtilities::getRunningiTunesInfo() {
    return launchedApplication(QStringLiteral("com.apple.iTunes"));
}

std::optional<QVariantMap> ProcessUtilities::getRunningFinder() {
    return launchedApplication(QStringLiteral("com.apple.finder"));
}

} // namespace quillmark
