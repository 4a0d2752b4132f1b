#pragma once

#include "platform/linux/windows/WindowModule.h"
#include "platform/process/Problem.h"

namespace quillmark {

/// The window module's check window.
class LinuxCheckWindows final : public CheckWindows {
public:
    explicit LinuxCheckWindows(WindowModule &windowModule) : m_windowModule(windowModule) {}

    void prepare() override { m_windowModule.prepare(); }

    CheckWindowView *load(const std::string &interfaceFile, const HeaderBranding &branding,
                          CheckWindowView::Owner &owner) override {
        const std::string notShown = "The check window could not be shown: ";
        std::string obstacle;
        Windows *const windows = m_windowModule.open(obstacle);
        if (windows == nullptr) {
            reportProblem(notShown + obstacle);
            return nullptr;
        }
        std::vector<std::string> problems;
        CheckWindowView *const window = windows->loadCheckWindow(interfaceFile, branding, owner, problems);
        for (const std::string &problem : problems) {
            reportProblem((window != nullptr ? "The check window is incomplete: " : notShown) + problem);
        }
        return window;
    }

    std::optional<std::string> drawHeader(const HeaderPicture &picture, std::string &obstacle) override {
        return m_windowModule.drawHeader(picture, obstacle);
    }

private:
    WindowModule &m_windowModule;
};

} // namespace quillmark
