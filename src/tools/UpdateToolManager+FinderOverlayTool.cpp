#include "tools/UpdateToolManager.h"
#include "utils/Log.h"

namespace quillmark {

qint32 UpdateToolManager::insertFinderOverlayBundle() {
    return begin([this] { return runFinderOverlayTool({QStringLiteral("insertfinderoverlay")}, true); });
}

qint32 UpdateToolManager::runFinderOverlayTool(const QStringList &arguments, bool waitUntilExit) {
    const QString path = installedTool(QStringLiteral("finderoverlaytool"));
    logVerbose("Running FinderOverlayTool \"%@\"...", path);
    // Deliberate: a run that is not waited for counts as succeeded, unlike those of the update tool.
    if (launch(path, arguments, waitUntilExit).value_or(0) != 0) {
        logVerbose("FinderOverlayTool \"%@\" did fail", path);
        return kRunFailed;
    }
    logVerbose("FinderOverlayTool \"%@\" did succeed", path);
    return kSucceeded;
}

} // namespace quillmark
