#include "accounts/KeyList.h"
#include "branding/LocalizedStrings.h"
#include "installcheck/InstallCheckManager.h"
#include "tools/UpdateToolManager.h"
#include "utils/ErrorText.h"
#include "utils/Exception.h"
#include "utils/FileManager.h"
#include "utils/Log.h"

#include <algorithm>

namespace quillmark {

namespace {

constexpr QStringView kCoreApp = u"CoreApp";
constexpr QStringView kFramework = u"Framework";
constexpr QStringView kBundle = u"Bundle";
constexpr QStringView kTool = u"QMTool";
constexpr QStringView kToolRoot = u"QMToolRoot";
constexpr QStringView kFinderCM = u"FinderCM";
constexpr QStringView kFinderOverlayInsert = u"FinderOverlayInsert";

/// The operation that examines the items of a type.
struct ItemType {
    QStringView name;
    void (InstallCheckManager::*examine)(const RequiredItem &item, qint32 index) = nullptr;
};

constexpr ItemType kItemTypes[] = {
    {kCoreApp, &InstallCheckManager::updateRequiredItemStatusCoreApp},
    {kFramework, &InstallCheckManager::updateRequiredItemStatusFramework},
    {kBundle, &InstallCheckManager::updateRequiredItemStatusBundle},
    {kTool, &InstallCheckManager::updateRequiredItemStatusTool},
    {kToolRoot, &InstallCheckManager::updateRequiredItemStatusToolRoot},
    {kFinderCM, &InstallCheckManager::updateRequiredItemStatusFinderCM},
    {kFinderOverlayInsert, &InstallCheckManager::updateRequiredItemStatusFinderOverlayInsert},
};

bool hasModeOfAProgram(const std::optional<FileAttributes> &attributes) {
    return attributes && attributes->posixPermissions == 0755;
}

} // namespace

std::span<const InstallCheckManager::StatusRule> InstallCheckManager::statusRules() {
    using Manager = InstallCheckManager;
    static constexpr StatusRule kRules[] = {
        {kCoreApp, &Manager::hasWrongCoreAppPermissions, u"Wrong Permissions", Fault::Helper},

        {kBundle, &Manager::isAbsent, u"Missing", Fault::Bundle},
        {kBundle, &Manager::hasNoVersion, u"Invalid", Fault::Bundle},
        {kBundle, &Manager::isOldBundle, u"Old Version", Fault::Bundle},

        {kTool, &Manager::isAbsent, u"Missing", Fault::Helper},
        {kTool, &Manager::isOldTool, u"Old Version", Fault::Helper},
        {kTool, &Manager::hasWrongToolPermissions, u"Wrong Permissions", Fault::Helper},

        {kToolRoot, &Manager::isNotRequiredYet, u"Not Required", Fault::None},
        {kToolRoot, &Manager::isAbsent, u"Missing", Fault::Helper},
        {kToolRoot, &Manager::isOldTool, u"Old Version", Fault::Helper},
        {kToolRoot, &Manager::hasWrongToolRootPermissions, u"Wrong Permissions", Fault::Helper},

        {kFinderCM, &Manager::isNotRequiredAnyMore, u"Not Required", Fault::None},
        {kFinderCM, &Manager::isAbsent, u"Missing", Fault::Helper},
        {kFinderCM, &Manager::doesBundleNeedUpdate, u"Old Version", Fault::Helper},

        {kFinderOverlayInsert, &Manager::isNotRequiredYet, u"Not Required", Fault::None},
        {kFinderOverlayInsert, &Manager::isAbsent, u"Missing", Fault::Helper},
        {kFinderOverlayInsert, &Manager::doesBundleNeedUpdate, u"Old Version", Fault::HelperToRestart},
    };
    return kRules;
}

bool InstallCheckManager::isAnythingMissing() const {
    return std::any_of(m_requiredItemsList.cbegin(), m_requiredItemsList.cend(),
                       [this](const QVariant &item) { return isMissing(item.toMap()); });
}

bool InstallCheckManager::isMissing(const RequiredItem &item) const {
    const QString type = textOf(item, kInstallType);
    const auto rules = statusRules();
    const auto absence = std::find_if(rules.begin(), rules.end(), [&type](const StatusRule &rule) {
        return rule.type == type && rule.holds == &InstallCheckManager::isAbsent;
    });
    // The rules before it say that the item is not required.
    return absence != rules.end() && isAbsent(item) &&
           std::none_of(rules.begin(), absence, [this, &type, &item](const StatusRule &rule) {
               return rule.type == type && (this->*rule.holds)(item);
           });
}

void InstallCheckManager::updateStatus() {
    logDetail("Updating status...");
    if (!m_isCatalogueReadable) {
        logError("The catalogue of required items (\"%@\") can't be read: no component is checked",
                 resourcePath(QStringLiteral("RequiredItems.plist")));
    }
    m_requiredItemsStatusKeys.fill(QStringLiteral("OK"), m_requiredItemsList.size());
    m_requiredItemsStatusList.fill(m_strings.localisedString(QStringLiteral("OK")), m_requiredItemsList.size());
    m_numberRepairsRequired = 0;
    m_numberItemsMissing = 0;
    m_helperRepairRequired = false;
    m_macFuseRepairRequired = false;
    for (qint32 index = 0; index < m_requiredItemsList.size(); ++index) {
        const RequiredItem item = m_requiredItemsList[index].toMap();
        const QString type = textOf(item, kInstallType);
        const QString name = textOf(item, kName);
        logDetail("Checking %@ \"%@\"...", type, name);
        for (const ItemType &itemType : kItemTypes) {
            if (type == itemType.name) {
                (this->*itemType.examine)(item, index);
            }
        }
        logVerbose(R"(Install check: %@ "%@" is "%@")", type, name, m_requiredItemsStatusList[index]);
    }
    logDetail("Updated status");
}

void InstallCheckManager::updateRequiredItemStatusCoreApp(const RequiredItem &item, qint32 index) {
    logDetail("Examining \"%@\"", pathToRequiredItemInResources(item));
    applyStatusRules(kCoreApp, item, index);
}

void InstallCheckManager::updateRequiredItemStatusFramework(const RequiredItem &item, qint32 index) {
    examine(kFramework, item, index); // deliberate: there is no rule
}

void InstallCheckManager::updateRequiredItemStatusBundle(const RequiredItem &item, qint32 index) {
    examine(kBundle, item, index);
}

void InstallCheckManager::updateRequiredItemStatusTool(const RequiredItem &item, qint32 index) {
    examine(kTool, item, index);
}

void InstallCheckManager::updateRequiredItemStatusToolRoot(const RequiredItem &item, qint32 index) {
    examine(kToolRoot, item, index);
}

void InstallCheckManager::updateRequiredItemStatusFinderCM(const RequiredItem &item, qint32 index) {
    examine(kFinderCM, item, index);
}

void InstallCheckManager::updateRequiredItemStatusFinderOverlayInsert(const RequiredItem &item, qint32 index) {
    examine(kFinderOverlayInsert, item, index);
}

bool InstallCheckManager::verifyQMToolPermissions(const RequiredItem &item) const {
    const QString path = textOf(item, kInstallPath);
    logDetail("Examining installed \"%@\"", path);
    const auto attributes = __QMCurrentThreadFileManager().attributes(path);
    return hasModeOfAProgram(attributes) && attributes->ownerAccountName == u"root";
}

bool InstallCheckManager::verifyCoreAppPermissions(const RequiredItem &item) const {
    const QString path = pathToRequiredItemInResources(item);
    logDetail("Examining \"%@\"", path);
    return hasModeOfAProgram(__QMCurrentThreadFileManager().attributes(path));
}

void InstallCheckManager::examine(QStringView type, const RequiredItem &item, qint32 index) {
    logDetail("Examining installed \"%@\"", textOf(item, kInstallPath));
    applyStatusRules(type, item, index);
}

void InstallCheckManager::applyStatusRules(QStringView type, const RequiredItem &item, qint32 index) {
    for (const StatusRule &rule : statusRules()) {
        if (rule.type == type && (this->*rule.holds)(item)) {
            m_requiredItemsStatusKeys[index] = QString::fromUtf16(rule.status);
            m_requiredItemsStatusList[index] = m_strings.localisedString(m_requiredItemsStatusKeys[index]);
            count(rule.fault, item, index);
            return;
        }
    }
}

void InstallCheckManager::count(Fault fault, const RequiredItem &item, qint32 index) {
    if (fault == Fault::None) {
        return;
    }
    ++m_numberItemsMissing;
    if (fault == Fault::Bundle) {
        // Deliberate: the last bundle at fault decides, whatever those before it were.
        m_macFuseRepairRequired = textOf(item, kName) == u"QuillmarkFS";
        return;
    }
    ++m_numberRepairsRequired;
    m_helperRepairRequired = true;
    if (fault == Fault::HelperToRestart) {
        m_restartIndex = index;
    }
}

bool InstallCheckManager::isAbsent(const RequiredItem &item) const {
    return !__QMCurrentThreadFileManager().fileExists(textOf(item, kInstallPath));
}

bool InstallCheckManager::hasWrongCoreAppPermissions(const RequiredItem &item) const {
    return !verifyCoreAppPermissions(item);
}

bool InstallCheckManager::hasWrongToolPermissions(const RequiredItem &item) const {
    return !verifyQMToolPermissions(item);
}

bool InstallCheckManager::hasWrongToolRootPermissions(const RequiredItem &item) const {
    return m_updateTool.verifyUpdateTool(textOf(item, kName)) == UpdateToolManager::kToolHasWrongPermissions;
}

bool InstallCheckManager::hasNoVersion(const RequiredItem &item) const { return !getBundleVersion(item); }

bool InstallCheckManager::isOldBundle(const RequiredItem &item) const {
    return !checkFrameworkVersion(item, getBundleVersion(item).value_or(ComponentVersion()));
}

/// A tool that can't even be started needs to be replaced, and does not keep the other items from being examined.
bool InstallCheckManager::isOldTool(const RequiredItem &item) const {
    try {
        return doesToolNeedUpdate(item);
    } catch (const Exception &exception) {
        logError("\"%@\" can't be asked for its version (%@)", textOf(item, kInstallPath),
                 errorExceptionToString(exception));
        return true;
    }
}

bool InstallCheckManager::isNotRequiredYet(const RequiredItem &item) const { return !checkMinMacOSXVersion(item); }

bool InstallCheckManager::isNotRequiredAnyMore(const RequiredItem &item) const { return !checkMaxMacOSXVersion(item); }

} // namespace quillmark
