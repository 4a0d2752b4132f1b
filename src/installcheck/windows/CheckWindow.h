#pragma once

#include "installcheck/windows/FaultsList.h"
#include "platform/CheckWindowView.h"

#include <QDialog>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <memory>

class QLabel;
class QProgressBar;
class QPushButton;

namespace quillmark {

class QuillmarkHeaderView;

/// The check window, built from its interface file. The widgets' names there are the outlets: "checkWindow" (the root),
/// "checkHeaderView", "checkText", "checkFaults", "checkInstall", "checkDontInstall", "checkDetails",
/// "repairProgressWindow", "repairProgressIndicator", "repairProgressText". What is missing or of another class is done
/// without.
///
/// The window is as large as what it holds, up to the screen's size. It grows with its texts and never shrinks, so that
/// nothing jumps when they change.
class CheckWindow final : public QObject, public CheckWindowView {
public:
    /// \param problems receives what is wrong with the file and its pictures, each as a part of a sentence.
    /// \returns null when the file gives no window.
    static std::unique_ptr<CheckWindow> load(const QString &interfaceFile, const HeaderBranding &branding,
                                             const QIcon &icon, Owner &owner, QStringList &problems);

    void setText(Outlet outlet, const std::string &text) override;
    void useWelcomeBranding() override;
    void setHeaderLogo(const Image &image) override;
    void makeInstallButtonDefault() override;
    void setFaults(const std::vector<Fault> &faults) override;
    void bringToFront() override;
    void beginProgressSheet() override;
    void endProgressSheet() override;
    void orderOutProgressSheet() override;
    void beginAlertSheet(const AlertDescription &alert) override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    CheckWindow(QDialog *window, const QIcon &icon, Owner &owner, QStringList &problems);
    /// The widget of that name; null when there is none of that class, which is a problem.
    template <class Widget>
    Widget *outlet(const char *name, QStringList &problems);
    void prepareHeader(QStringList &problems);
    void connectButtons();
    void prepareSheet();
    void setCovered(bool isCovered);
    /// Puts a sheet where it leaves the list in sight.
    void placeOverExplanation(QDialog &sheet) const;
    void fitIntoScreen();

    Owner &m_owner;
    std::unique_ptr<QDialog> m_window;
    QuillmarkHeaderView *m_header;
    QLabel *m_text;
    FaultsList m_faults;
    QPushButton *m_install;
    QPushButton *m_dontInstall;
    QPushButton *m_details;
    QDialog *m_sheet;
    QProgressBar *m_indicator;
    QLabel *m_progressText;
    QPointer<QDialog> m_alert;
    QSize m_size{600, 60}; ///< of the window: the largest that it needed so far
    bool m_isFrameKnown = false;
};

} // namespace quillmark
