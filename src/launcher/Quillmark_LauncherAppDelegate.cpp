#include "launcher/Quillmark_LauncherAppDelegate.h"

#include "accounts/KeyList.h"
#include "desktop/MoveToApplications.h"
#include "launcher/BundleDefaults.h"
#include "launcher/StaleBundles.h"
#include "platform/Alerts.h"
#include "platform/Application.h"
#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "texts/LocalizedStrings.h"
#include "tools/ProcessUtilities.h"
#include "utils/Exception.h"
#include "utils/IntegerValue.h"
#include "utils/LogSetup.h"
#include "utils/ProductVersion.h"

#include <future>

namespace quillmark {

Quillmark_LauncherAppDelegate::Quillmark_LauncherAppDelegate(LocalizedStrings &strings,
                                                             std::function<InstallCheckManager &()> installCheck)
    : m_strings(strings), m_installCheck(std::move(installCheck)),
      m_productName(strings.localisedString("ProductName")) {}

bool Quillmark_LauncherAppDelegate::applicationDidFinishLaunching() {
    readConfiguration();
    setUpLogging();
    logNormal("%@ version %@", m_productName, versionOfThisAppAsString(true));
    logNormal("%@ did begin launching...", m_productName);
    InstallCheckManager &installCheck = m_installCheck();
    installCheck.setDelegate(this);
    ensureCoreNotRunning();
    PFAltDstBundleName(m_productName);
    // A link to a folder above makes this search endless; whoever looks at the log then finds what goes on.
    logVerbose("Looking for older copies of the client...");
    _flushLog();
    PFAlsoRemoveBundles(staleClientBundles(m_productName, platform().workspace, platform().propertyList));
    PFMoveToApplicationsFolderIfNecessary(m_strings);
    logNormal("%@ did finish launching", m_productName);
    if (installCheck.checkForRequiredItems()) {
        launchCore();
        return false;
    }
    logFaults(installCheck);
    _flushLog(); // the user may look at the log while the window waits for him
    if (!installCheck.hasWindow()) {
        installCheck.runFaultsAlert(); // a launcher that ends without a word would be a riddle
    }
    return installCheck.hasWindow();
}

void Quillmark_LauncherAppDelegate::readConfiguration() {
    config =
        platform().propertyList.readDictionary(platform().mainBundle.pathForResource("Config", "plist").value_or(""));
    registerBundleDefaults();
}

void Quillmark_LauncherAppDelegate::setUpLogging() {
    UserDefaults &defaults = platform().userDefaults;
    const auto fileLevel = defaults.stringForKey("FileLogging");
    const auto stdioLevel = defaults.stringForKey("StdioLogging");
    try {
        initLogging3(fileLevel, stdioLevel, std::nullopt, m_productName, m_productName);
    } catch (const Exception &exception) {
        // Wrong levels are raised again; a log whose place can't be used costs the log, and not the start.
        initLogging2(fileLevel, stdioLevel, std::nullopt);
        logError("There is no log file: %@", exception.reason());
    }
    if (const auto damaged = defaults.damagedFile()) {
        logError("The preferences were damaged and start anew; the old file is \"%@\"", damaged);
    }
    if (const auto problem = defaults.problem()) {
        logError("The preferences \"%@\" %@", defaults.file(), problem);
    }
}

void Quillmark_LauncherAppDelegate::logFaults(const InstallCheckManager &installCheck) const {
    for (const size_t index : installCheck.faults()) {
        const RequiredItem &item = installCheck.requiredItemsList()[index].dictionary();
        const std::string installPath = textOf(item, kInstallPath).value_or("");
        logError(R"("%@" is not in order: %@ ("%@"))", textOf(item, kName), installCheck.statusText(index),
                 installPath.empty() ? installCheck.pathToRequiredItemInResources(item) : installPath);
    }
}

std::int32_t Quillmark_LauncherAppDelegate::brandId() const {
    return static_cast<std::int32_t>(integerValueOf(valueOf(config, "Brand")));
}

std::string Quillmark_LauncherAppDelegate::coreName() const { return m_productName + "Core"; }

bool Quillmark_LauncherAppDelegate::isCoreRunning() {
    const auto ask = [this] { return ProcessUtilities::quillmarkCoreAlreadyRunning(coreName()); };
    InstallCheckManager &installCheck = m_installCheck();
    if (!installCheck.prepareWindow()) {
        return ask();
    }
    // Most of the start's time goes by in this question to the process table.
    std::future<bool> answer = std::async(std::launch::async, ask);
    installCheck.loadWindowInAdvance();
    return answer.get();
}

void Quillmark_LauncherAppDelegate::ensureCoreNotRunning() {
    if (!isCoreRunning()) {
        return;
    }
    AlertDescription alert;
    alert.windowTitle = m_productName;
    alert.messageText = m_strings.localisedString("QuillmarkLauncher_AlreadyRunning");
    alert.informativeText = m_strings.localisedString("QuillmarkLauncher_YouMustQuit");
    alert.buttons = {m_strings.localisedString("Quit")};
    logNormal("Letting other copy run, we will terminate");
    _flushLog();
    platform().alerts.runModal(alert);
    logNormal("User did quit");
    platform().application.terminate();
}

void Quillmark_LauncherAppDelegate::launchCore() {
    const std::string name = coreName();
    const auto bundle = platform().mainBundle.pathForResource(name, "app");
    const auto executable = bundle ? std::optional(*bundle + "/Contents/MacOS/" + name) : std::nullopt;
    logNormal("Launching \"%@\"...", executable);
    platform().workspace.launchApplication(executable.value_or(""));
    logNormal("Launched \"%@\"", executable);
    logNormal("Will terminate now");
    platform().application.terminate();
}

} // namespace quillmark
