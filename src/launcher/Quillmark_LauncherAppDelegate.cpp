#include "launcher/Quillmark_LauncherAppDelegate.h"

#include "accounts/KeyList.h"
#include "branding/LocalizedStrings.h"
#include "desktop/MoveToApplications.h"
#include "launcher/StaleBundles.h"
#include "platform/Alerts.h"
#include "platform/Application.h"
#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "tools/ProcessUtilities.h"
#include "utils/IntegerValue.h"
#include "utils/LogSetup.h"
#include "utils/Version.h"

namespace quillmark {

Quillmark_LauncherAppDelegate::Quillmark_LauncherAppDelegate(const Platform &platform, LocalizedStrings &strings,
                                                             std::function<InstallCheckManager &()> installCheck)
    : m_platform(platform), m_strings(strings), m_installCheck(std::move(installCheck)),
      m_productName(strings.localisedString(QStringLiteral("ProductName"))) {}

bool Quillmark_LauncherAppDelegate::applicationDidFinishLaunching() {
    readConfiguration();
    setUpLogging();
    logNormal("%@ version %@", m_productName, versionOfThisAppAsString(true));
    logNormal("%@ did begin launching...", m_productName);
    InstallCheckManager &installCheck = m_installCheck();
    installCheck.setDelegate(this);
    ensureCoreNotRunning();
    PFAltDstBundleName(m_productName);
    PFAlsoRemoveBundles(staleClientBundles(m_productName, m_platform.workspace, m_platform.propertyList));
    PFMoveToApplicationsFolderIfNecessary(m_platform, m_strings);
    logNormal("%@ did finish launching", m_productName);
    if (installCheck.checkForRequiredItems()) {
        launchCore();
    }
    logFaults(installCheck);
    _flushLog(); // the user may look at the log while the window waits for him
    if (!installCheck.hasWindow()) {
        installCheck.runFaultsAlert(); // a launcher that ends without a word would be a riddle
    }
    return installCheck.hasWindow();
}

void Quillmark_LauncherAppDelegate::readConfiguration() {
    const auto resource = [this](const QString &name) {
        return m_platform.propertyList.readDictionary(
            m_platform.mainBundle.pathForResource(name, QStringLiteral("plist")));
    };
    config = resource(QStringLiteral("Config"));
    m_platform.userDefaults.registerDefaults(resource(QStringLiteral("Defaults")));
}

void Quillmark_LauncherAppDelegate::setUpLogging() {
    UserDefaults &defaults = m_platform.userDefaults;
    const QString fileLevel = defaults.stringForKey(QStringLiteral("FileLogging"));
    const QString stdioLevel = defaults.stringForKey(QStringLiteral("StdioLogging"));
    initLogging3(fileLevel, stdioLevel, QString(), m_productName, m_productName);
    if (const QString damaged = defaults.damagedFile(); !damaged.isNull()) {
        logError("The preferences were damaged and start anew; the old file is \"%@\"", damaged);
    }
}

void Quillmark_LauncherAppDelegate::logFaults(const InstallCheckManager &installCheck) const {
    for (qsizetype index = 0; index < installCheck.requiredItemsList().size(); ++index) {
        const QString &key = installCheck.requiredItemsStatusKeys()[index];
        if (key != u"OK" && key != u"Not Required") {
            const RequiredItem item = installCheck.requiredItemsList()[index].toMap();
            const QString installPath = textOf(item, kInstallPath);
            logError(R"("%@" is not in order: %@ ("%@"))", textOf(item, kName),
                     installCheck.requiredItemsStatusList()[index],
                     installPath.isEmpty() ? installCheck.pathToRequiredItemInResources(item) : installPath);
        }
    }
}

qint32 Quillmark_LauncherAppDelegate::brandId() const {
    return static_cast<qint32>(integerValueOf(config.value(QStringLiteral("Brand"))));
}

QString Quillmark_LauncherAppDelegate::coreName() const { return formatted("%@Core", m_productName); }

void Quillmark_LauncherAppDelegate::ensureCoreNotRunning() {
    bool isCoreRunning = false;
    // Most of the start's time goes by in these questions to the process table.
    m_installCheck().loadWindowWhile(
        [&] { isCoreRunning = ProcessUtilities::quillmarkCoreAlreadyRunning(coreName()); });
    if (!isCoreRunning) {
        return;
    }
    AlertDescription alert;
    alert.windowTitle = m_productName;
    alert.messageText = m_strings.localisedString(QStringLiteral("QuillmarkLauncher_AlreadyRunning"));
    alert.informativeText = m_strings.localisedString(QStringLiteral("QuillmarkLauncher_YouMustQuit"));
    alert.buttons = QStringList{m_strings.localisedString(QStringLiteral("Quit"))};
    logNormal("Letting other copy run, we will terminate");
    _flushLog();
    m_platform.alerts.runModal(alert);
    logNormal("User did quit");
    m_platform.application.terminate();
}

void Quillmark_LauncherAppDelegate::launchCore() {
    const QString name = coreName();
    const QString bundle = m_platform.mainBundle.pathForResource(name, QStringLiteral("app"));
    const QString executable = bundle.isNull() ? QString() : formatted("%@/Contents/MacOS/%@", bundle, name);
    logNormal("Launching \"%@\"...", executable);
    m_platform.workspace.launchApplication(executable);
    logNormal("Launched \"%@\"", executable);
    logNormal("Will terminate now");
    m_platform.application.terminate();
}

} // namespace quillmark
