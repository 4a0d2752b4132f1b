#include "platform/linux/LinuxCheckWindows.h"

#include "platform/Problem.h"
#include "platform/linux/WindowModule.h"

namespace quillmark {

void LinuxCheckWindows::prepare() { m_windowModule.prepare(); }

CheckWindowView *LinuxCheckWindows::load(const QString &interfaceFile, const HeaderBranding &branding,
                                         CheckWindowView::Owner &owner) {
    QString obstacle;
    Windows *const windows = m_windowModule.open(obstacle);
    if (windows == nullptr) {
        reportProblem(QStringLiteral("The check window could not be shown: %1").arg(obstacle));
        return nullptr;
    }
    QStringList problems;
    CheckWindowView *const window = windows->loadCheckWindow(interfaceFile, branding, owner, problems);
    const QString sentence = window != nullptr ? QStringLiteral("The check window is incomplete: %1")
                                               : QStringLiteral("The check window could not be shown: %1");
    for (const QString &problem : problems) {
        reportProblem(sentence.arg(problem));
    }
    return window;
}

} // namespace quillmark
