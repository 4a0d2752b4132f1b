#pragma once

#include "platform/Alerts.h"

#include <QIcon>

namespace quillmark {

/// Alerts as dialogs, with the application's icon.
class DialogAlerts final : public Alerts {
public:
    explicit DialogAlerts(const QString &resourceFolder);
    AlertAnswer runModal(const AlertDescription &alert) override;
    const QIcon &icon() const { return m_icon; }

private:
    QIcon m_icon;
};

} // namespace quillmark
