#include "tools/UpdateToolManager.h"
#include "utils/Log.h"

namespace quillmark {

std::int32_t UpdateToolManager::insertFinderOverlayBundle() {
    begin();
    return finish(runFinderOverlayTool({"insertfinderoverlay"}, true));
}

std::int32_t UpdateToolManager::runFinderOverlayTool(const std::vector<std::string> &arguments, bool waitUntilExit) {
    const std::string path = installedTool("finderoverlaytool");
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
