#pragma once

#include "platform/CheckWindowView.h"

#include <string>

namespace quillmark {

class WindowModule;

/// The window module's check window.
class LinuxCheckWindows final : public CheckWindows {
public:
    explicit LinuxCheckWindows(WindowModule &windowModule) : m_windowModule(windowModule) {}
    void prepare() override;
    CheckWindowView *load(const std::string &interfaceFile, const HeaderBranding &branding,
                          CheckWindowView::Owner &owner) override;

private:
    WindowModule &m_windowModule;
};

} // namespace quillmark
