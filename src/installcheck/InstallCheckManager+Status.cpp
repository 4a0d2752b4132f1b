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

constexpr std::string_view kCoreApp = "CoreApp";
constexpr std::string_view kFramework = "Framework";
constexpr std::string_view kBundle = "Bundle";
constexpr std::string_view kTool = "QMTool";
constexpr std::string_view kToolRoot = "QMToolRoot";
constexpr std::string_view kFinderCM = "FinderCM";
constexpr std::string_view kFinderOverlayInsert = "FinderOverlayInsert";

/// The operation that examines the items of a type.
struct ItemType {
    std::string_view name;
    void (InstallCheckManager::*examine)(const RequiredItem &item, std::int32_t index) = nullptr;
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
        {kCoreApp, &Manager::hasWrongCoreAppPermissions, "Wrong Permissions", Fault::Helper},

        {kBundle, &Manager::isAbsent, "Missing", Fault::Bundle},
        {kBundle, &Manager::hasNoVersion, "Invalid", Fault::Bundle},
        {kBundle, &Manager::isOldBundle, "Old Version", Fault::Bundle},

        {kTool, &Manager::isAbsent, "Missing", Fault::Helper},
        {kTool, &Manager::isOldTool, "Old Version", Fault::Helper},
        {kTool, &Manager::hasWrongToolPermissions, "Wrong Permissions", Fault::Helper},

        {kToolRoot, &Manager::isNotRequiredYet, "Not Required", Fault::None},
        {kToolRoot, &Manager::isAbsent, "Missing", Fault::Helper},
        {kToolRoot, &Manager::isOldTool, "Old Version", Fault::Helper},
        {kToolRoot, &Manager::hasWrongToolRootPermissions, "Wrong Permissions", Fault::Helper},

        {kFinderCM, &Manager::isNotRequiredAnyMore, "Not Required", Fault::None},
        {kFinderCM, &Manager::isAbsent, "Missing", Fault::Helper},
        {kFinderCM, &Manager::doesBundleNeedUpdate, "Old Version", Fault::Helper},

        {kFinderOverlayInsert, &Manager::isNotRequiredYet, "Not Required", Fault::None},
        {kFinderOverlayInsert, &Manager::isAbsent, "Missing", Fault::Helper},
        {kFinderOverlayInsert, &Manager::doesBundleNeedUpdate, "Old Version", Fault::HelperToRestart},
    };
    return kRules;
}

bool InstallCheckManager::isAnythingMissing() const {
    return std::any_of(m_requiredItemsList.cbegin(), m_requiredItemsList.cend(),
                       [this](const Value &item) { return isMissing(item.dictionary()); });
}

bool InstallCheckManager::isMissing(const RequiredItem &item) const {
    const auto type = textOf(item, kInstallType);
    const auto rules = statusRules();
    const auto absence = std::find_if(rules.begin(), rules.end(), [&type](const StatusRule &rule) {
        return type == rule.type && rule.holds == &InstallCheckManager::isAbsent;
    });
    // The rules before it say that the item is not required.
    return absence != rules.end() && isAbsent(item) &&
           std::none_of(rules.begin(), absence, [this, &type, &item](const StatusRule &rule) {
               return type == rule.type && (this->*rule.holds)(item);
           });
}

void InstallCheckManager::updateStatus() {
    logDetail("Updating status...");
    if (!m_isCatalogueReadable) {
        logError("The catalogue of required items (\"%@\") can't be read: no component is checked",
                 resourcePath("RequiredItems.plist"));
    }
    m_requiredItemsStatusKeys.assign(m_requiredItemsList.size(), "OK");
    m_requiredItemsStatusList.assign(m_requiredItemsList.size(), m_strings.localisedString("OK"));
    m_numberRepairsRequired = 0;
    m_numberItemsMissing = 0;
    m_helperRepairRequired = false;
    m_macFuseRepairRequired = false;
    for (size_t index = 0; index < m_requiredItemsList.size(); ++index) {
        const RequiredItem &item = m_requiredItemsList[index].dictionary();
        const auto type = textOf(item, kInstallType);
        const auto name = textOf(item, kName);
        logDetail("Checking %@ \"%@\"...", type, name);
        for (const ItemType &itemType : kItemTypes) {
            if (type == itemType.name) {
                (this->*itemType.examine)(item, static_cast<std::int32_t>(index));
            }
        }
        logVerbose(R"(Install check: %@ "%@" is "%@")", type, name, m_requiredItemsStatusList[index]);
    }
    logDetail("Updated status");
}

void InstallCheckManager::updateRequiredItemStatusCoreApp(const RequiredItem &item, std::int32_t index) {
    logDetail("Examining \"%@\"", pathToRequiredItemInResources(item));
    applyStatusRules(kCoreApp, item, index);
}

void InstallCheckManager::updateRequiredItemStatusFramework(const RequiredItem &item, std::int32_t index) {
    examine(kFramework, item, index); // deliberate: there is no rule
}

void InstallCheckManager::updateRequiredItemStatusBundle(const RequiredItem &item, std::int32_t index) {
    examine(kBundle, item, index);
}

void InstallCheckManager::updateRequiredItemStatusTool(const RequiredItem &item, std::int32_t index) {
    examine(kTool, item, index);
}

void InstallCheckManager::updateRequiredItemStatusToolRoot(const RequiredItem &item, std::int32_t index) {
    examine(kToolRoot, item, index);
}

void InstallCheckManager::updateRequiredItemStatusFinderCM(const RequiredItem &item, std::int32_t index) {
    examine(kFinderCM, item, index);
}

void InstallCheckManager::updateRequiredItemStatusFinderOverlayInsert(const RequiredItem &item, std::int32_t index) {
    examine(kFinderOverlayInsert, item, index);
}

bool InstallCheckManager::verifyQMToolPermissions(const RequiredItem &item) const {
    const std::string path = textOf(item, kInstallPath).value_or("");
    logDetail("Examining installed \"%@\"", path);
    const auto attributes = __QMCurrentThreadFileManager().attributes(path);
    return hasModeOfAProgram(attributes) && attributes->ownerAccountName == "root";
}

bool InstallCheckManager::verifyCoreAppPermissions(const RequiredItem &item) const {
    const std::string path = pathToRequiredItemInResources(item);
    logDetail("Examining \"%@\"", path);
    return hasModeOfAProgram(__QMCurrentThreadFileManager().attributes(path));
}

void InstallCheckManager::examine(std::string_view type, const RequiredItem &item, std::int32_t index) {
    logDetail("Examining installed \"%@\"", textOf(item, kInstallPath));
    applyStatusRules(type, item, index);
}

void InstallCheckManager::applyStatusRules(std::string_view type, const RequiredItem &item, std::int32_t index) {
    for (const StatusRule &rule : statusRules()) {
        if (rule.type == type && (this->*rule.holds)(item)) {
            m_requiredItemsStatusKeys[static_cast<size_t>(index)] = rule.status;
            m_requiredItemsStatusList[static_cast<size_t>(index)] = m_strings.localisedString(rule.status);
            count(rule.fault, item, index);
            return;
        }
    }
}

void InstallCheckManager::count(Fault fault, const RequiredItem &item, std::int32_t index) {
    if (fault == Fault::None) {
        return;
    }
    ++m_numberItemsMissing;
    if (fault == Fault::Bundle) {
        // Deliberate: the last bundle at fault decides, whatever those before it were.
        m_macFuseRepairRequired = textOf(item, kName) == "QuillmarkFS";
        return;
    }
    ++m_numberRepairsRequired;
    m_helperRepairRequired = true;
    if (fault == Fault::HelperToRestart) {
        m_restartIndex = index;
    }
}

bool InstallCheckManager::isAbsent(const RequiredItem &item) const {
    return !__QMCurrentThreadFileManager().fileExists(textOf(item, kInstallPath).value_or(""));
}

bool InstallCheckManager::hasWrongCoreAppPermissions(const RequiredItem &item) const {
    return !verifyCoreAppPermissions(item);
}

bool InstallCheckManager::hasWrongToolPermissions(const RequiredItem &item) const {
    return !verifyQMToolPermissions(item);
}

bool InstallCheckManager::hasWrongToolRootPermissions(const RequiredItem &item) const {
    return m_updateTool.verifyUpdateTool(textOf(item, kName).value_or("")) ==
           UpdateToolManager::kToolHasWrongPermissions;
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
