#pragma once

#include "platform/Alerts.h"
#include "platform/linux/windows/WindowModule.h"
#include "platform/process/Problem.h"
#include "platform/values/WhiteSpace.h"

#include <cstdio>

namespace quillmark {

/// Alerts of the window module, and a line on standard error where there can be none.
class LinuxAlerts final : public Alerts {
public:
    explicit LinuxAlerts(WindowModule &windowModule) : m_windowModule(windowModule) {}

    AlertAnswer runModal(const AlertDescription &alert) override {
        std::string obstacle;
        if (Windows *windows = m_windowModule.open(obstacle); windows != nullptr) {
            return windows->alerts().runModal(alert);
        }
        reportProblem("The alert \"" + alert.messageText + "\" could not be shown: " + obstacle);
        const std::string line = alert.windowTitle + ": " + alert.messageText + ' ' + alert.informativeText;
        std::fputs((simplified(line) + '\n').c_str(), stderr);
        return {alert.lastButton(), false};
    }

private:
    WindowModule &m_windowModule;
};

} // namespace quillmark
