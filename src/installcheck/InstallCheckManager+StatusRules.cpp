#include "accounts/KeyList.h"
#include "installcheck/InstallCheckManager.h"
#include "texts/LocalizedStrings.h"
#include "tools/UpdateToolManager.h"
#include "utils/ErrorText.h"
#include "utils/Exception.h"
#include "utils/FileManager.h"
#include "utils/Log.h"

#include <algorithm>

namespace quillmark {

namespace {

using Manager = InstallCheckManager;

/// The operation that examines the items of a type.
struct ItemType {
    std::string_view name;
    void (Manager::*examine)(const RequiredItem &item, std::int32_t index) = nullptr;
};

constexpr ItemType kItemTypes[] = {
    {"CoreApp", &Manager::updateRequiredItemStatusCoreApp},
    {"Framework", &Manager::updateRequiredItemStatusFramework},
    {"Bundle", &Manager::updateRequiredItemStatusBundle},
    {"QMTool", &Manager::updateRequiredItemStatusTool},
    {"QMToolRoot", &Manager::updateRequiredItemStatusToolRoot},
    {"FinderCM", &Manager::updateRequiredItemStatusFinderCM},
    {"FinderOverlayInsert", &Manager::updateRequiredItemStatusFinderOverlayInsert},
};

/// Rules that turn on one of the install check's own questions.
template <bool (Manager::*question)(const RequiredItem &) const>
bool holds(const Manager &manager, const RequiredItem &item) {
    return (manager.*question)(item);
}
template <bool (Manager::*question)(const RequiredItem &) const>
bool fails(const Manager &manager, const RequiredItem &item) {
    return !(manager.*question)(item);
}

bool hasModeOfAProgram(const std::optional<FileAttributes> &attributes) {
    return attributes && attributes->posixPermissions == 0755;
}

} // namespace

std::span<const InstallCheckManager::StatusRule> InstallCheckManager::statusRules() {
    using enum ItemStatus;
    static constexpr auto isAbsent = [](const Manager &, const RequiredItem &item) {
        return !__QMCurrentThreadFileManager().fileExists(textOf(item, kInstallPath).value_or(""));
    };
    static constexpr auto hasNoVersion = [](const Manager &manager, const RequiredItem &item) {
        return !manager.getBundleVersion(item);
    };
    static constexpr auto isOldBundle = [](const Manager &manager, const RequiredItem &item) {
        return !checkFrameworkVersion(item, manager.getBundleVersion(item).value_or(ComponentVersion()));
    };
    static constexpr auto mayNotActAsRoot = [](const Manager &manager, const RequiredItem &item) {
        return manager.m_updateTool.verifyUpdateTool(textOf(item, kName).value_or("")) ==
               UpdateToolManager::kToolHasWrongPermissions;
    };
    static constexpr StatusRule kRules[] = {
        {"CoreApp", fails<&Manager::verifyCoreAppPermissions>, WrongPermissions, Fault::Helper},

        {"Bundle", isAbsent, Missing, Fault::Bundle},
        {"Bundle", hasNoVersion, Invalid, Fault::Bundle},
        {"Bundle", isOldBundle, OldVersion, Fault::Bundle},

        {"QMTool", isAbsent, Missing, Fault::Helper},
        {"QMTool", holds<&Manager::isOldTool>, OldVersion, Fault::Helper},
        {"QMTool", fails<&Manager::verifyQMToolPermissions>, WrongPermissions, Fault::Helper},

        {"QMToolRoot", fails<&Manager::checkMinMacOSXVersion>, NotRequired, Fault::None},
        {"QMToolRoot", isAbsent, Missing, Fault::Helper},
        {"QMToolRoot", holds<&Manager::isOldTool>, OldVersion, Fault::Helper},
        {"QMToolRoot", mayNotActAsRoot, WrongPermissions, Fault::Helper},

        {"FinderCM", fails<&Manager::checkMaxMacOSXVersion>, NotRequired, Fault::None},
        {"FinderCM", isAbsent, Missing, Fault::Helper},
        {"FinderCM", holds<&Manager::doesBundleNeedUpdate>, OldVersion, Fault::Helper},

        {"FinderOverlayInsert", fails<&Manager::checkMinMacOSXVersion>, NotRequired, Fault::None},
        {"FinderOverlayInsert", isAbsent, Missing, Fault::Helper},
        {"FinderOverlayInsert", holds<&Manager::doesBundleNeedUpdate>, OldVersion, Fault::HelperToRestart},
    };
    return kRules;
}

bool InstallCheckManager::isAnythingMissing() const {
    const List &items = requiredItemsList();
    return std::any_of(items.begin(), items.end(), [this](const Value &item) { return isMissing(item.dictionary()); });
}

bool InstallCheckManager::isMissing(const RequiredItem &item) const {
    const auto type = textOf(item, kInstallType);
    const auto rules = statusRules();
    const auto absence = std::find_if(rules.begin(), rules.end(), [&type](const StatusRule &rule) {
        return type == rule.type && rule.status == ItemStatus::Missing;
    });
    // The rules before it say that the item is not required.
    return absence != rules.end() && absence->holds(*this, item) &&
           std::none_of(rules.begin(), absence, [this, &type, &item](const StatusRule &rule) {
               return type == rule.type && rule.holds(*this, item);
           });
}

void InstallCheckManager::updateStatus() {
    logDetail("Updating status...");
    if (!isCatalogueReadable()) {
        logError("The catalogue of required items (\"%@\") can't be read: no component is checked",
                 resourcePath("RequiredItems.plist"));
    }
    m_statuses.assign(requiredItemsList().size(), ItemStatus::InOrder);
    m_numberRepairsRequired = 0;
    m_numberItemsMissing = 0;
    m_helperRepairRequired = false;
    m_macFuseRepairRequired = false;
    for (size_t index = 0; index < m_statuses.size(); ++index) {
        const RequiredItem &item = requiredItemsList()[index].dictionary();
        const auto type = textOf(item, kInstallType);
        const auto name = textOf(item, kName);
        logDetail("Checking %@ \"%@\"...", type, name);
        for (const ItemType &itemType : kItemTypes) {
            if (type == itemType.name) {
                (this->*itemType.examine)(item, static_cast<std::int32_t>(index));
            }
        }
        logVerbose(R"(Install check: %@ "%@" is "%@")", type, name, statusText(index));
    }
    logDetail("Updated status");
}

std::vector<std::string> InstallCheckManager::requiredItemsStatusKeys() const {
    std::vector<std::string> keys(m_statuses.size());
    std::transform(m_statuses.begin(), m_statuses.end(), keys.begin(), keyOf);
    return keys;
}

std::vector<std::string> InstallCheckManager::requiredItemsStatusList() const {
    std::vector<std::string> texts;
    for (size_t index = 0; index < m_statuses.size(); ++index) {
        texts.push_back(statusText(index));
    }
    return texts;
}

std::vector<size_t> InstallCheckManager::faults() const {
    std::vector<size_t> places;
    for (size_t index = 0; index < m_statuses.size(); ++index) {
        if (m_statuses[index] != ItemStatus::InOrder && m_statuses[index] != ItemStatus::NotRequired) {
            places.push_back(index);
        }
    }
    return places;
}

std::string InstallCheckManager::statusText(size_t index) const {
    return m_strings.localisedString(keyOf(m_statuses[index]));
}

void InstallCheckManager::updateRequiredItemStatusCoreApp(const RequiredItem &item, std::int32_t index) {
    logDetail("Examining \"%@\"", pathToRequiredItemInResources(item));
    applyStatusRules("CoreApp", item, index);
}

void InstallCheckManager::updateRequiredItemStatusFramework(const RequiredItem &item, std::int32_t index) {
    examine("Framework", item, index); // deliberate: there is no rule
}

void InstallCheckManager::updateRequiredItemStatusBundle(const RequiredItem &item, std::int32_t index) {
    examine("Bundle", item, index);
}

void InstallCheckManager::updateRequiredItemStatusTool(const RequiredItem &item, std::int32_t index) {
    examine("QMTool", item, index);
}

void InstallCheckManager::updateRequiredItemStatusToolRoot(const RequiredItem &item, std::int32_t index) {
    examine("QMToolRoot", item, index);
}

void InstallCheckManager::updateRequiredItemStatusFinderCM(const RequiredItem &item, std::int32_t index) {
    examine("FinderCM", item, index);
}

void InstallCheckManager::updateRequiredItemStatusFinderOverlayInsert(const RequiredItem &item, std::int32_t index) {
    examine("FinderOverlayInsert", item, index);
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
        if (rule.type == type && rule.holds(*this, item)) {
            m_statuses[static_cast<size_t>(index)] = rule.status;
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

} // namespace quillmark
