#pragma once

#include "platform/CheckWindowView.h"

#include <QDialog>
#include <QObject>
#include <QPointer>
#include <memory>

class QIcon;
class QLabel;
class QProgressBar;
class QPushButton;
class QTreeWidget;

namespace quillmark {

class QuillmarkHeaderView;
struct HeaderBranding;

/// The check window, built from its interface file. The widgets' names there are the outlets: "checkWindow" (the root),
/// "checkHeaderView", "checkText", "checkFaults", "checkInstall", "checkDontInstall", "checkDetails",
/// "repairProgressWindow", "repairProgressIndicator", "repairProgressText". What is missing is done without.
class CheckWindow final : public QObject, public CheckWindowView {
public:
    /// \param obstacle receives why there is no window, as a part of a sentence. \returns null when the file gives
    /// none.
    static std::unique_ptr<CheckWindow> load(const QString &interfaceFile, const HeaderBranding &branding,
                                             const QIcon &icon, Owner &owner, QString &obstacle);

    void setText(Outlet outlet, const QString &text) override;
    void useWelcomeBranding() override;
    void setHeaderLogo(const Image &image) override;
    void makeInstallButtonDefault() override;
    void setFaults(const QList<Fault> &faults) override;
    void bringToFront() override;
    void beginProgressSheet() override;
    void endProgressSheet() override;
    void orderOutProgressSheet() override;
    void beginAlertSheet(const AlertDescription &alert) override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    CheckWindow(QDialog *window, const QIcon &icon, Owner &owner);
    void connectButtons();
    void prepareSheet();

    Owner &m_owner;
    std::unique_ptr<QDialog> m_window;
    QuillmarkHeaderView *m_header;
    QLabel *m_text;
    QTreeWidget *m_faults;
    QPushButton *m_install;
    QPushButton *m_dontInstall;
    QPushButton *m_details;
    QDialog *m_sheet;
    QProgressBar *m_indicator;
    QLabel *m_progressText;
    QPointer<QDialog> m_alert;
};

} // namespace quillmark
