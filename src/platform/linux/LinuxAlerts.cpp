#include "platform/linux/LinuxAlerts.h"

#include "platform/Problem.h"
#include "platform/linux/WindowModule.h"

#include <cstdio>

namespace quillmark {

AlertAnswer LinuxAlerts::runModal(const AlertDescription &alert) {
    QString obstacle;
    if (Windows *windows = m_windowModule.open(obstacle); windows != nullptr) {
        return windows->alerts().runModal(alert);
    }
    reportProblem(QStringLiteral("The alert \"%1\" could not be shown: %2").arg(alert.messageText, obstacle));
    const QString line = QStringLiteral("%1: %2 %3").arg(alert.windowTitle, alert.messageText, alert.informativeText);
    const QByteArray bytes = line.simplified().toUtf8() + '\n';
    std::fputs(bytes.constData(), stderr);
    return {alert.lastButton(), false};
}

} // namespace quillmark
