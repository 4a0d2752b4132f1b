#include "platform/linux/LinuxCheckWindows.h"

#include "platform/Problem.h"
#include "platform/linux/WindowModule.h"

namespace quillmark {

namespace {

const std::string kNotShown = "The check window could not be shown: ";

} // namespace

void LinuxCheckWindows::prepare() { m_windowModule.prepare(); }

CheckWindowView *LinuxCheckWindows::load(const std::string &interfaceFile, const HeaderBranding &branding,
                                         CheckWindowView::Owner &owner) {
    std::string obstacle;
    Windows *const windows = m_windowModule.open(obstacle);
    if (windows == nullptr) {
        reportProblem(kNotShown + obstacle);
        return nullptr;
    }
    std::vector<std::string> problems;
    CheckWindowView *const window = windows->loadCheckWindow(interfaceFile, branding, owner, problems);
    for (const std::string &problem : problems) {
        reportProblem((window != nullptr ? "The check window is incomplete: " : kNotShown) + problem);
    }
    return window;
}

} // namespace quillmark
