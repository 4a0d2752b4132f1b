#include "alerts/windows/DialogAlerts.h"

#include "alerts/windows/AlertDialog.h"

#include <QAccessibleWidget>

namespace quillmark {

namespace {

/// Assistive programs treat an alert with more urgency than a dialog.
QAccessibleInterface *accessibleAlert(const QString & /*className*/, QObject *object) {
    auto *const alert = dynamic_cast<AlertDialog *>(object);
    return alert != nullptr ? new QAccessibleWidget(alert, QAccessible::AlertMessage) : nullptr;
}

} // namespace

DialogAlerts::DialogAlerts(const QString &resourceFolder) {
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        m_icon.addFile(resourceFolder + QStringLiteral("/Quillmark-%1.png").arg(size));
    }
    QAccessible::installFactory(accessibleAlert);
}

AlertAnswer DialogAlerts::runModal(const AlertDescription &alert) {
    AlertDialog dialog(alert, m_icon);
    const int button = dialog.exec();
    return {button, dialog.isSuppressionChecked()};
}

} // namespace quillmark
