#include "installcheck/InstallCheckManager.h"
#include "platform/Application.h"
#include "platform/MainThread.h"
#include "platform/Platform.h"
#include "platform/Workspace.h"
#include "platform/files/Path.h"
#include "utils/Exception.h"
#include "utils/Log.h"

#include <utility>

namespace quillmark {

void InstallCheckManager::installButtonClick() {
    if (std::exchange(m_isRepairing, true)) {
        return;
    }
    if (m_window != nullptr) {
        m_window->beginProgressSheet();
    }
    platform().mainThread.detachNewThread("repair", [this] { runSelfRepairThread(); });
}

void InstallCheckManager::runSelfRepairThread() {
    bool isRepaired = false;
    try {
        isRepaired = runRepairPass();
    } catch (const Exception &exception) { // here the thread ends, and the window waits for its answer
        logErrorException(exception);
    }
    if (isRepaired) {
        platform().mainThread.post([this] { bringWindowBackToFront(); });
    } else {
        _repairFailed();
    }
}

void InstallCheckManager::bringWindowBackToFront() {
    repairDidEnd();
    if (checkForRequiredItems()) {
        runQuillmark();
        if (m_numberItemsMissing < 1) { // else an alert covers the window, and holds the end up
            platform().application.terminate();
        }
    } else {
        _flushLog(); // here and before each alert: the user may look at the log while the launcher waits for him
    }
}

void InstallCheckManager::runQuillmark() {
    updateStatus();
    if (m_numberItemsMissing < 1 && m_delegate != nullptr) {
        m_delegate->launchCore();
    } else {
        if (m_window != nullptr) {
            // "Continue" repairs these now, and not what the window came up with.
            m_window->setFaults(describedFaults());
        }
        beginFailureSheet("RunFailedTitle");
    }
}

void InstallCheckManager::_repairFailed() {
    platform().mainThread.post([this] { repairFailed(); });
}

void InstallCheckManager::repairFailed() {
    repairDidEnd();
    beginFailureSheet("RepairFailedTitle");
}

void InstallCheckManager::repairDidEnd() {
    m_isRepairing = false;
    if (m_window != nullptr) {
        m_window->endProgressSheet();
    }
}

void InstallCheckManager::dontInstallButtonClick() {
    logNormal("User chose to quit");
    platform().application.exitAtOnce();
}

void InstallCheckManager::detailsButtonClick() {
    if (const auto log = getLogFilePath()) {
        platform().workspace.openFolder(deletingLastPathComponent(*log));
    }
}

void InstallCheckManager::windowWillClose() { platform().application.exitAtOnce(); }

} // namespace quillmark
