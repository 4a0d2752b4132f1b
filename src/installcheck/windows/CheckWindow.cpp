#include "installcheck/windows/CheckWindow.h"

#include "branding/windows/QuillmarkHeaderView.h"
#include "launcher/windows/AlertDialog.h"
#include "platform/Alerts.h"
#include "platform/HeaderBranding.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFile>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTreeWidget>
#include <QUiLoader>

namespace quillmark {

namespace {

/// Knows the header view, too.
class InterfaceLoader final : public QUiLoader {
public:
    explicit InterfaceLoader(const HeaderBranding &branding) : m_branding(branding) {}

    QWidget *createWidget(const QString &className, QWidget *parent, const QString &name) override {
        if (className == QLatin1StringView("quillmark::QuillmarkHeaderView")) {
            auto *const header = new QuillmarkHeaderView(m_branding, parent);
            header->setObjectName(name);
            return header;
        }
        return QUiLoader::createWidget(className, parent, name);
    }

private:
    const HeaderBranding &m_branding;
};

QString buttonText(const QString &text) { return QString(text).replace(u'&', QStringLiteral("&&")); }

void setButtonText(QPushButton *button, const QString &text) {
    if (button != nullptr) {
        button->setText(buttonText(text)); // an ampersand is no mnemonic here
        button->setAccessibleName(text);
    }
}

void setLabelText(QLabel *label, const QString &text) {
    if (label != nullptr) {
        label->setText(text);
    }
}

void centre(QWidget &window) {
    window.adjustSize();
    window.move(QStyle::alignedRect(window.layoutDirection(), Qt::AlignCenter, window.size(),
                                    window.screen()->availableGeometry())
                    .topLeft());
}

} // namespace

std::unique_ptr<CheckWindow> CheckWindow::load(const QString &interfaceFile, const HeaderBranding &branding,
                                               const QIcon &icon, Owner &owner, QString &obstacle) {
    QFile file(interfaceFile);
    if (!file.open(QIODevice::ReadOnly)) {
        obstacle = QStringLiteral("the interface file \"InstallCheck.ui\" can't be read");
        return nullptr;
    }
    InterfaceLoader loader(branding);
    QWidget *const root = loader.load(&file);
    auto *const window = dynamic_cast<QDialog *>(root);
    if (window == nullptr) {
        delete root;
        obstacle = QStringLiteral("\"%1\" holds no window: %2").arg(interfaceFile, loader.errorString());
        return nullptr;
    }
    return std::unique_ptr<CheckWindow>(new CheckWindow(window, icon, owner));
}

CheckWindow::CheckWindow(QDialog *window, const QIcon &icon, Owner &owner)
    : m_owner(owner), m_window(window),
      m_header(window->findChild<QuillmarkHeaderView *>(QStringLiteral("checkHeaderView"))),
      m_text(window->findChild<QLabel *>(QStringLiteral("checkText"))),
      m_faults(window->findChild<QTreeWidget *>(QStringLiteral("checkFaults"))),
      m_install(window->findChild<QPushButton *>(QStringLiteral("checkInstall"))),
      m_dontInstall(window->findChild<QPushButton *>(QStringLiteral("checkDontInstall"))),
      m_details(window->findChild<QPushButton *>(QStringLiteral("checkDetails"))),
      m_sheet(window->findChild<QDialog *>(QStringLiteral("repairProgressWindow"))),
      m_indicator(window->findChild<QProgressBar *>(QStringLiteral("repairProgressIndicator"))),
      m_progressText(window->findChild<QLabel *>(QStringLiteral("repairProgressText"))) {
    // Above ordinary windows, with a close box and no way to be made smaller.
    window->setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                           Qt::WindowStaysOnTopHint);
    window->setWindowIcon(icon);
    window->installEventFilter(this);
    connectButtons();
    prepareSheet();
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
        m_sheet->setWindowFlags(Qt::Sheet | Qt::CustomizeWindowHint | Qt::WindowTitleHint);
        m_sheet->setWindowModality(Qt::WindowModal);
        m_sheet->hide();
        m_sheet->installEventFilter(this);
    }
}

bool CheckWindow::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Close && watched == m_window.get()) {
        m_owner.windowWillClose();
        event->ignore(); // who owns the window decides what becomes of it
        return true;
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

void CheckWindow::setText(Outlet outlet, const QString &text) {
    switch (outlet) {
    case Outlet::Header:
        if (m_header != nullptr) {
            m_header->setTitle(text);
        }
        break;
    case Outlet::Explanation:
        setLabelText(m_text, text.trimmed());
        m_window->setAccessibleDescription(text.trimmed());
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

void CheckWindow::setFaults(const QList<Fault> &faults) {
    if (m_faults == nullptr) {
        return;
    }
    m_faults->clear();
    for (const Fault &fault : faults) {
        auto *const line = new QTreeWidgetItem(m_faults, {fault.name, fault.status});
        line->setIcon(0, m_faults->style()->standardIcon(QStyle::SP_MessageBoxWarning));
    }
    m_faults->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_faults->setVisible(!faults.isEmpty());
}

void CheckWindow::bringToFront() {
    m_window->show();
    centre(*m_window);
    QApplication::setActiveWindow(m_window.get());
    m_window->raise();
    m_window->activateWindow();
}

void CheckWindow::beginProgressSheet() {
    if (m_sheet != nullptr) {
        if (m_indicator != nullptr) {
            m_indicator->setRange(0, 0); // endless
        }
        m_sheet->open();
    }
}

void CheckWindow::endProgressSheet() {
    if (m_indicator != nullptr) {
        m_indicator->setRange(0, 1);
    }
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
    m_alert->open();
}

} // namespace quillmark
