#include "accounts/KeyList.h"
#include "branding/BrandingManager.h"
#include "installcheck/InstallCheckManager.h"
#include "platform/Alerts.h"
#include "platform/Bundle.h"
#include "platform/CheckWindowView.h"
#include "platform/Platform.h"
#include "platform/process/Problem.h"
#include "platform/windows/HeaderBranding.h"
#include "utils/Exception.h"
#include "utils/Log.h"

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
    if (!std::exchange(m_hasTriedWindow, true)) {
        const std::string file = platform().mainBundle.pathForResource("InstallCheck", "ui").value_or("");
        const HeaderBranding branding{
            platform().mainBundle.resourcePath(), m_strings.localisedString("ProductName"),
            [this] { return m_branding.getBrandingID(); },
            [this] { return m_delegate != nullptr ? m_delegate->brandId() : 0; },
            [this](std::int32_t brand) { return m_branding.getBrandedLogoImageForBrandID(brand); }};
        m_window = platform().checkWindows.load(file, branding, *this);
        if (m_window != nullptr) {
            awakeFromNib();
        }
    }
    return m_window != nullptr;
}

bool InstallCheckManager::prepareWindow() const {
    const bool isWanted = isAnythingMissing();
    if (isWanted) {
        platform().checkWindows.prepare();
    }
    return isWanted;
}

void InstallCheckManager::loadWindowInAdvance() {
    m_problemsInAdvance = problemsOf([this] { loadWindow(); });
}

void InstallCheckManager::awakeFromNib() {
    const auto setText = [this](Outlet outlet, std::string_view key) {
        m_window->setText(outlet, m_strings.localisedString(key));
    };
    setText(Outlet::Header, "Installing Quillmark");
    m_window->useWelcomeBranding();
    HeaderLogo header(*m_window);
    m_branding.setHeaderViewBrandedLogoImage(header);
    setText(Outlet::InstallButton, "Continue");
    setText(Outlet::DontInstallButton, "QuillmarkLauncher_DontInstall");
    setText(Outlet::Window, "ProductName");
    setText(Outlet::Progress, "QuillmarkLauncher_Installing");
    setText(Outlet::DetailsButton, "QuillmarkLauncher_Details");
    setText(Outlet::FaultsList, "QuillmarkLauncher_FaultyComponents");
    setText(Outlet::NameColumn, "QuillmarkLauncher_Component");
    setText(Outlet::StatusColumn, "QuillmarkLauncher_Status");
    m_window->makeInstallButtonDefault();
}

void InstallCheckManager::runSelfRepair() {
    for (const std::string &problem : std::exchange(m_problemsInAdvance, {})) {
        reportProblem(problem);
    }
    if (!loadWindow()) {
        return;
    }
    std::string text = m_strings.localisedString("QuillmarkLauncher_RepairInfo");
    if (m_macFuseRepairRequired || m_helperRepairRequired) {
        text += m_strings.localisedString("QuillmarkLauncher_Components");
        if (m_macFuseRepairRequired) {
            text += m_strings.localisedString("QuillmarkLauncher_FileSystem");
        }
        if (m_helperRepairRequired) {
            text += m_strings.localisedString("QuillmarkLauncher_Helpers");
        }
        text += '\n';
    }
    m_window->setText(Outlet::Explanation, text);
    m_window->setFaults(describedFaults());
    m_window->bringToFront();
}

std::vector<CheckWindowView::Fault> InstallCheckManager::describedFaults() const {
    std::vector<CheckWindowView::Fault> list;
    for (const size_t index : faults()) {
        list.push_back({textOf(requiredItemsList()[index].dictionary(), kName).value_or(""), statusText(index)});
    }
    return list;
}

void InstallCheckManager::runFaultsAlert() {
    AlertDescription alert;
    alert.windowTitle = m_strings.localisedString("ProductName");
    alert.messageText = m_strings.localisedString("RunFailedTitle");
    for (const CheckWindowView::Fault &fault : describedFaults()) {
        alert.informativeText += alert.informativeText.empty() ? "" : "\n";
        alert.informativeText += fault.name + " (" + fault.status + ')';
    }
    alert.buttons = {m_strings.localisedString("Quit")};
    platform().alerts.runModal(alert);
}

void InstallCheckManager::sheetDidEnd() {
    if (m_window != nullptr) {
        m_window->orderOutProgressSheet();
    }
}

void InstallCheckManager::beginFailureSheet(std::string_view titleKey) {
    AlertDescription alert;
    alert.windowTitle = m_strings.localisedString("ProductName");
    alert.messageText = m_strings.localisedString(titleKey);
    alert.informativeText = formatted(m_strings.localisedString("RepairFailed"));
    alert.buttons = {m_strings.localisedString("OK")};
    _flushLog();
    if (m_window != nullptr) {
        m_window->beginAlertSheet(alert);
    }
}

} // namespace quillmark
