#include "accounts/KeyList.h"
#include "branding/BrandingManager.h"
#include "installcheck/InstallCheckManager.h"
#include "platform/Alerts.h"
#include "platform/Application.h"
#include "platform/Bundle.h"
#include "platform/CheckWindowView.h"
#include "platform/HeaderBranding.h"
#include "platform/MainThread.h"
#include "platform/Path.h"
#include "platform/Platform.h"
#include "platform/Problem.h"
#include "platform/Workspace.h"
#include "utils/Exception.h"
#include "utils/Log.h"

#include <future>
#include <utility>

namespace quillmark {

namespace {

using Outlet = CheckWindowView::Outlet;

/// The window's header, for the branding manager to hand a logo to.
class HeaderLogo final : public LogoView {
public:
    explicit HeaderLogo(CheckWindowView &window) : m_window(window) {}
    void setLogoImage(const Image &image) override { m_window.setHeaderLogo(image); }

private:
    CheckWindowView &m_window;
};

} // namespace

bool InstallCheckManager::loadWindow() {
    if (!std::exchange(m_isWindowLoaded, true)) {
        const QString file =
            m_platform.mainBundle.pathForResource(QStringLiteral("InstallCheck"), QStringLiteral("ui"));
        const HeaderBranding branding{m_platform.mainBundle.resourcePath(),
                                      m_strings.localisedString(QStringLiteral("ProductName")),
                                      [this] { return m_branding.getBrandingID(); },
                                      [this] { return m_delegate != nullptr ? m_delegate->brandId() : 0; },
                                      [this](qint32 brand) { return m_branding.getBrandedLogoImageForBrandID(brand); }};
        m_window = m_platform.checkWindows.load(file, branding, *this);
        if (m_window != nullptr) {
            awakeFromNib();
        }
    }
    return m_window != nullptr;
}

void InstallCheckManager::loadWindowWhile(const std::function<void()> &call) {
    if (!isAnythingMissing()) {
        call();
        return;
    }
    m_platform.checkWindows.prepare();
    std::future<void> done = std::async(std::launch::async, call);
    m_problemsInAdvance = qtTexts(problemsOf([this] { loadWindow(); }));
    done.get();
}

void InstallCheckManager::awakeFromNib() {
    const auto setText = [this](Outlet outlet, const QString &key) {
        m_window->setText(outlet, m_strings.localisedString(key));
    };
    setText(Outlet::Header, QStringLiteral("Installing Quillmark"));
    m_window->useWelcomeBranding();
    HeaderLogo header(*m_window);
    m_branding.setHeaderViewBrandedLogoImage(header);
    setText(Outlet::InstallButton, QStringLiteral("Continue"));
    setText(Outlet::DontInstallButton, QStringLiteral("QuillmarkLauncher_DontInstall"));
    setText(Outlet::Window, QStringLiteral("ProductName"));
    setText(Outlet::Progress, QStringLiteral("QuillmarkLauncher_Installing"));
    setText(Outlet::DetailsButton, QStringLiteral("QuillmarkLauncher_Details"));
    setText(Outlet::FaultsList, QStringLiteral("QuillmarkLauncher_FaultyComponents"));
    setText(Outlet::NameColumn, QStringLiteral("QuillmarkLauncher_Component"));
    setText(Outlet::StatusColumn, QStringLiteral("QuillmarkLauncher_Status"));
    m_window->makeInstallButtonDefault();
}

void InstallCheckManager::runSelfRepair() {
    for (const QString &problem : std::exchange(m_problemsInAdvance, {})) {
        reportProblem(problem);
    }
    if (!loadWindow()) {
        return;
    }
    QString text = m_strings.localisedString(QStringLiteral("QuillmarkLauncher_RepairInfo"));
    if (m_macFuseRepairRequired || m_helperRepairRequired) {
        text += m_strings.localisedString(QStringLiteral("QuillmarkLauncher_Components"));
        if (m_macFuseRepairRequired) {
            text += m_strings.localisedString(QStringLiteral("QuillmarkLauncher_FileSystem"));
        }
        if (m_helperRepairRequired) {
            text += m_strings.localisedString(QStringLiteral("QuillmarkLauncher_Helpers"));
        }
        text += u'\n';
    }
    m_window->setText(Outlet::Explanation, text);
    m_window->setFaults(faults());
    m_window->bringToFront();
}

QList<CheckWindowView::Fault> InstallCheckManager::faults() const {
    QList<CheckWindowView::Fault> list;
    for (qsizetype index = 0; index < m_requiredItemsList.size(); ++index) {
        const QString &key = m_requiredItemsStatusKeys[index];
        if (key != u"OK" && key != u"Not Required") {
            list.append({textOf(m_requiredItemsList[index].toMap(), kName), m_requiredItemsStatusList[index]});
        }
    }
    return list;
}

void InstallCheckManager::runFaultsAlert() {
    QStringList lines;
    for (const CheckWindowView::Fault &fault : faults()) {
        lines << formatted("%@ (%@)", fault.name, fault.status);
    }
    AlertDescription alert;
    alert.windowTitle = m_strings.localisedString(QStringLiteral("ProductName"));
    alert.messageText = m_strings.localisedString(QStringLiteral("RunFailedTitle"));
    alert.informativeText = lines.join(u'\n');
    alert.buttons = QStringList{m_strings.localisedString(QStringLiteral("Quit"))};
    m_platform.alerts.runModal(alert);
}

void InstallCheckManager::installButtonClick() {
    if (std::exchange(m_isRepairing, true)) {
        return;
    }
    if (m_window != nullptr) {
        m_window->beginProgressSheet();
    }
    m_platform.mainThread.detachNewThread(QStringLiteral("repair"), [this] { runSelfRepairThread(); });
}

void InstallCheckManager::dontInstallButtonClick() {
    logNormal("User chose to quit");
    m_platform.application.exitAtOnce();
}

void InstallCheckManager::detailsButtonClick() {
    if (const QString log = getLogFilePath(); !log.isNull()) {
        m_platform.workspace.openFolder(deletingLastPathComponent(log));
    }
}

void InstallCheckManager::windowWillClose() { m_platform.application.exitAtOnce(); }

void InstallCheckManager::sheetDidEnd() {
    if (m_window != nullptr) {
        m_window->orderOutProgressSheet();
    }
}

void InstallCheckManager::repairDidEnd() {
    m_isRepairing = false;
    if (m_window != nullptr) {
        m_window->endProgressSheet();
    }
}

void InstallCheckManager::bringWindowBackToFront() {
    repairDidEnd();
    if (checkForRequiredItems()) {
        runQuillmark();
        if (m_numberItemsMissing < 1) { // else an alert covers the window, and holds the end up
            m_platform.application.terminate();
        }
    } else {
        _flushLog(); // here and before each alert: the user may look at the log while the launcher waits for him
    }
}

void InstallCheckManager::runQuillmark() {
    updateStatus();
    if (m_numberItemsMissing < 1 && m_delegate != nullptr) {
        m_delegate->launchCore();
    } else {
        if (m_window != nullptr) {
            m_window->setFaults(faults()); // "Continue" repairs these now, and not what the window came up with
        }
        beginFailureSheet(QStringLiteral("RunFailedTitle"));
    }
}

void InstallCheckManager::runSelfRepairThread() {
    bool isRepaired = false;
    try {
        isRepaired = runRepairPass();
    } catch (const Exception &exception) { // here the thread ends, and the window waits for its answer
        logErrorException(exception);
    }
    if (isRepaired) {
        m_platform.mainThread.post([this] { bringWindowBackToFront(); });
    } else {
        _repairFailed();
    }
}

void InstallCheckManager::_repairFailed() {
    m_platform.mainThread.post([this] { repairFailed(); });
}

void InstallCheckManager::repairFailed() {
    repairDidEnd();
    beginFailureSheet(QStringLiteral("RepairFailedTitle"));
}

void InstallCheckManager::beginFailureSheet(const QString &titleKey) {
    AlertDescription alert;
    alert.windowTitle = m_strings.localisedString(QStringLiteral("ProductName"));
    alert.messageText = m_strings.localisedString(titleKey);
    alert.informativeText = formatted(m_strings.localisedString(QStringLiteral("RepairFailed")));
    alert.buttons = QStringList{m_strings.localisedString(QStringLiteral("OK"))};
    _flushLog();
    if (m_window != nullptr) {
        m_window->beginAlertSheet(alert);
    }
}

} // namespace quillmark
