#include "platform/linux/LinuxAlerts.h"

#include "platform/Problem.h"
#include "platform/WhiteSpace.h"
#include "platform/linux/WindowModule.h"

#include <cstdio>

namespace quillmark {

AlertAnswer LinuxAlerts::runModal(const AlertDescription &alert) {
    std::string obstacle;
    if (Windows *windows = m_windowModule.open(obstacle); windows != nullptr) {
        return windows->alerts().runModal(alert);
    }
    reportProblem("The alert \"" + alert.messageText + "\" could not be shown: " + obstacle);
    const std::string line = alert.windowTitle + ": " + alert.messageText + ' ' + alert.informativeText;
    std::fputs((simplified(line) + '\n').c_str(), stderr);
    return {alert.lastButton(), false};
}

} // namespace quillmark
