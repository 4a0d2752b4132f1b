#include "platform/linux/LinuxCheckWindows.h"

#include "platform/Problem.h"
#include "platform/linux/WindowModule.h"

namespace quillmark {

CheckWindowView *LinuxCheckWindows::load(const QString &interfaceFile, const HeaderBranding &branding,
                                         CheckWindowView::Owner &owner) {
    QString obstacle;
    Windows *const windows = m_windowModule.open(obstacle);
    CheckWindowView *const window =
        windows != nullptr ? windows->loadCheckWindow(interfaceFile, branding, owner, obstacle) : nullptr;
    if (window == nullptr) {
        reportProblem(QStringLiteral("The check window could not be shown: %1").arg(obstacle));
    }
    return window;
}

} // namespace quillmark
