#pragma once

#include "platform/Alerts.h"

namespace quillmark {

class WindowModule;

/// Alerts of the window module, and a line on standard error where there can be none.
class LinuxAlerts final : public Alerts {
public:
    explicit LinuxAlerts(WindowModule &windowModule) : m_windowModule(windowModule) {}

    AlertAnswer runModal(const AlertDescription &alert) override;

private:
    WindowModule &m_windowModule;
};

} // namespace quillmark
