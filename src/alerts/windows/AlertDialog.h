#pragma once

#include <QDialog>

class QBoxLayout;
class QCheckBox;
class QIcon;

namespace quillmark {

struct AlertDescription;

/// The window of an alert; exec() answers the index of the pressed button. Widgets can be found by their names: "alert"
/// (the window itself), "icon", "messageText", "informativeText", "suppression" (the check box), "button0" (the default
/// one) and so on.
class AlertDialog final : public QDialog {
public:
    /// \param parent the window that it covers as a sheet; null for a window of its own.
    AlertDialog(const AlertDescription &alert, const QIcon &icon, QWidget *parent = nullptr);

    /// Whether the check box is on; false when there is none.
    bool isSuppressionChecked() const;

    /// Escape and the close box end here.
    void reject() override { done(m_escapeButton); }

protected:
    void showEvent(QShowEvent *event) override;

private:
    void addTexts(QBoxLayout &layout, const AlertDescription &alert);
    void addSuppression(QBoxLayout &layout, const QString &title);
    void addButtons(QBoxLayout &layout, QStringList titles);

    const int m_escapeButton;
    QCheckBox *m_suppression = nullptr;
};

} // namespace quillmark
