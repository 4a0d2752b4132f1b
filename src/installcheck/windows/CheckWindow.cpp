#include "installcheck/windows/CheckWindow.h"

#include "alerts/windows/AlertDialog.h"
#include "branding/windows/QuillmarkHeaderView.h"
#include "installcheck/windows/InterfaceFile.h"
#include "installcheck/windows/WindowPlacement.h"
#include "platform/Alerts.h"
#include "texts/windows/QtText.h"

#include <QCloseEvent>
#include <QIcon>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <utility>

namespace quillmark {

namespace {

constexpr int kMinimumButtonWidth = 100;
constexpr int kButtonRoom = 16; // beside a long title, more than styles give
constexpr QColor kHeaderGround{0x1d, 0x24, 0x5c};

QString buttonText(const QString &text) { return QString(text).replace(u'&', QStringLiteral("&&")); }

void setButtonText(QPushButton *button, const QString &text) {
    if (button != nullptr) {
        button->setText(buttonText(text)); // an ampersand marks no shortcut key here
        button->setAccessibleName(text);
        button->setMinimumWidth(std::max(kMinimumButtonWidth, button->sizeHint().width() + kButtonRoom));
    }
}

void setLabelText(QLabel *label, const QString &text) {
    if (label != nullptr) {
        label->setText(text);
    }
}

} // namespace

std::unique_ptr<CheckWindow> CheckWindow::load(const QString &interfaceFile, const HeaderBranding &branding,
                                               const QIcon &icon, Owner &owner, QStringList &problems) {
    QDialog *const window = loadInterface(interfaceFile, branding, problems);
    if (window == nullptr) {
        return nullptr;
    }
    std::unique_ptr<CheckWindow> checkWindow(new CheckWindow(window, icon, owner, problems));
    checkWindow->m_faults.setIcon(QIcon(qtText(branding.resourceFolder) + QStringLiteral("/fault.png")));
    return checkWindow;
}

CheckWindow::CheckWindow(QDialog *window, const QIcon &icon, Owner &owner, QStringList &problems)
    : m_owner(owner), m_window(window), m_header(outlet<QuillmarkHeaderView>("checkHeaderView", problems)),
      m_text(outlet<QLabel>("checkText", problems)), m_faults(outlet<QTreeWidget>("checkFaults", problems)),
      m_install(outlet<QPushButton>("checkInstall", problems)),
      m_dontInstall(outlet<QPushButton>("checkDontInstall", problems)),
      m_details(outlet<QPushButton>("checkDetails", problems)),
      m_sheet(outlet<QDialog>("repairProgressWindow", problems)),
      m_indicator(outlet<QProgressBar>("repairProgressIndicator", problems)),
      m_progressText(outlet<QLabel>("repairProgressText", problems)) {
    // With a close box and no way to be made smaller.
    window->setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    window->setWindowIcon(icon);
    window->installEventFilter(this);
    prepareHeader(problems);
    connectButtons();
    prepareSheet();
}

template <class Widget>
Widget *CheckWindow::outlet(const char *name, QStringList &problems) {
    auto *const named = m_window->findChild<QWidget *>(QLatin1StringView(name));
    auto *const outlet = dynamic_cast<Widget *>(named);
    if (named == nullptr) {
        problems << QStringLiteral("the interface file has no \"%1\"").arg(QLatin1StringView(name));
    } else if (outlet == nullptr) {
        problems << QStringLiteral("\"%1\" in the interface file is of the wrong class (%2)")
                        .arg(QLatin1StringView(name), QLatin1StringView(named->metaObject()->className()));
        named->hide(); // nothing will ever be written there
    }
    return outlet;
}

void CheckWindow::prepareHeader(QStringList &problems) {
    if (m_header == nullptr) {
        return;
    }
    for (const QString &picture : m_header->unreadablePictures()) {
        problems << QStringLiteral("the picture \"%1\" can't be read").arg(picture);
    }
    m_header->setGround(kHeaderGround); // for a white title when the picture that it stands on can't be read
}

void CheckWindow::connectButtons() {
    const auto connectButton = [this](QPushButton *button, void (Owner::*action)()) {
        if (button != nullptr) {
            button->setAutoDefault(false); // Return presses the default button wherever the focus is
            connect(button, &QPushButton::clicked, this, [this, action] { (m_owner.*action)(); });
        }
    };
    connectButton(m_install, &Owner::installButtonClick);
    connectButton(m_dontInstall, &Owner::dontInstallButtonClick);
    connectButton(m_details, &Owner::detailsButtonClick);
    // Escape.
    connect(m_window.get(), &QDialog::rejected, this, [this] { m_owner.dontInstallButtonClick(); });
}

void CheckWindow::prepareSheet() {
    if (m_sheet != nullptr) {
        m_sheet->setWindowFlags(Qt::Sheet | Qt::FramelessWindowHint); // a title bar would offer to close it
        m_sheet->setWindowModality(Qt::WindowModal);
        m_sheet->hide();
        m_sheet->installEventFilter(this);
    }
}

bool CheckWindow::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Close && watched == m_window.get()) {
        if (m_window->isEnabled()) {
            m_owner.windowWillClose();
        }
        event->ignore(); // who owns the window decides what becomes of it
        return true;
    }
    // The window manager gives the frame when the window is shown.
    const bool isMoved = event->type() == QEvent::Move && watched == m_window.get();
    if (isMoved && !frameOf(*m_window).isNull() && !std::exchange(m_isFrameKnown, true)) {
        centre(*m_window);
    }
    // A repair can't be called off half-way.
    const auto *const key = dynamic_cast<const QKeyEvent *>(event);
    const bool isEscape = event->type() == QEvent::KeyPress && key != nullptr && key->key() == Qt::Key_Escape;
    if (watched == m_sheet && (isEscape || event->type() == QEvent::Close)) {
        event->ignore();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void CheckWindow::setText(Outlet outlet, const std::string &newText) {
    const QString text = qtText(newText);
    switch (outlet) {
    case Outlet::Header:
        if (m_header != nullptr) {
            m_header->setTitle(text);
        }
        break;
    case Outlet::Explanation:
        setLabelText(m_text, text);
        m_window->setAccessibleDescription(text);
        break;
    case Outlet::InstallButton:
        setButtonText(m_install, text);
        break;
    case Outlet::DontInstallButton:
        setButtonText(m_dontInstall, text);
        break;
    case Outlet::DetailsButton:
        setButtonText(m_details, text);
        break;
    case Outlet::FaultsList:
        m_faults.setAccessibleName(text);
        break;
    case Outlet::NameColumn:
        m_faults.setTitle(FaultsList::kName, text);
        break;
    case Outlet::StatusColumn:
        m_faults.setTitle(FaultsList::kStatus, text);
        break;
    case Outlet::Window:
        m_window->setWindowTitle(text);
        if (m_sheet != nullptr) {
            m_sheet->setWindowTitle(text);
        }
        break;
    case Outlet::Progress:
        setLabelText(m_progressText, text);
        if (m_indicator != nullptr) {
            m_indicator->setAccessibleName(text);
        }
        break;
    }
}

void CheckWindow::useWelcomeBranding() {
    if (m_header != nullptr) {
        m_header->setUseWelcomeBranding(true);
    }
}

void CheckWindow::setHeaderLogo(const Image &image) {
    if (m_header != nullptr) {
        m_header->setLogoImage(image);
    }
}

void CheckWindow::makeInstallButtonDefault() {
    if (m_install != nullptr) {
        m_install->setDefault(true);
        m_install->setFocus();
    }
}

void CheckWindow::setFaults(const std::vector<Fault> &faults) { m_faults.setFaults(faults); }

void CheckWindow::fitIntoScreen() {
    const QSize largest = largestSize(*m_window);
    const auto isTooHigh = [&] { return neededSize(*m_window).height() > largest.height(); };
    for (m_faults.showAllLines(); isTooHigh() && m_faults.showOneLineLess();) {
    }
    m_size = m_size.expandedTo(neededSize(*m_window)).boundedTo(largest);
    m_window->setFixedSize(m_size);
}

void CheckWindow::bringToFront() {
    fitIntoScreen();
    centre(*m_window);
    setFloating(*m_window, true);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

void CheckWindow::placeOverExplanation(QDialog &sheet) const {
    sheet.adjustSize();
    const int middle = (m_window->width() - sheet.width()) / 2;
    const int below = m_header != nullptr ? m_header->height() : 0;
    sheet.move(m_window->mapToGlobal(QPoint(middle, below)));
}

/// While the sheet is up, a password dialog is: an ordinary window, which a floating one would hide. And nothing can be
/// pressed then, not by assistive programs either, which reach past a sheet.
void CheckWindow::setCovered(bool isCovered) {
    setFloating(*m_window, !isCovered);
    for (QPushButton *const button : {m_install, m_dontInstall, m_details}) {
        if (button != nullptr) {
            button->setEnabled(!isCovered);
        }
    }
    if (!isCovered && m_install != nullptr) {
        m_install->setFocus(); // which it lost
    }
}

void CheckWindow::beginProgressSheet() {
    setCovered(true);
    if (m_sheet != nullptr) {
        if (m_indicator != nullptr) {
            m_indicator->setRange(0, 0); // endless
        }
        placeOverExplanation(*m_sheet);
        m_sheet->open();
    } else {
        m_window->setEnabled(false); // which the sheet would have done
    }
}

void CheckWindow::endProgressSheet() {
    if (m_indicator != nullptr) {
        m_indicator->setRange(0, 1);
    }
    m_window->setEnabled(true);
    setCovered(false);
    m_owner.sheetDidEnd();
}

void CheckWindow::orderOutProgressSheet() {
    if (m_sheet != nullptr) {
        m_sheet->hide();
    }
}

void CheckWindow::beginAlertSheet(const AlertDescription &alert) {
    delete m_alert;
    m_alert = new AlertDialog(alert, m_window->windowIcon(), m_window.get());
    m_alert->setAttribute(Qt::WA_DeleteOnClose);
    placeOverExplanation(*m_alert);
    m_alert->open();
}

} // namespace quillmark
