#include "accounts/KeyList.h"
#include "installcheck/InstallCheckManager.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "tools/UpdateToolManager.h"
#include "utils/Log.h"

#include <algorithm>

namespace quillmark {

namespace {

constexpr std::string_view kUpdateTool = "updateqm";

bool isMissingOrOld(const std::string &status) { return status == "Missing" || status == "Old Version"; }

bool hasWrongPermissions(const std::string &status) { return status == "Wrong Permissions"; }

std::string nameOf(const RequiredItem &item) { return textOf(item, kName).value_or(""); }

/// What the update tool itself says of it goes to standard error.
void logFailure(const RequiredItem &item) { logError("\"%@\" could not be repaired", textOf(item, kName)); }

bool isSuccess(std::int32_t result) { return result == UpdateToolManager::kSucceeded; }

/// How the second pass treats the items of a type.
struct RepairRule {
    std::string_view type;
    bool (InstallCheckManager::*repair)(const RequiredItem &item) = nullptr;
    bool isNotRequiredRepaired = false; ///< such a status does not keep the item from being repaired
    bool isUpdateToolLeftOut = false;   ///< the first pass has seen to it
    bool isInstallerNeeded = false;     ///< without one there is nothing to repair it with
};

using Manager = InstallCheckManager;

constexpr RepairRule kRepairRules[] = {
    {"CoreApp", &Manager::repairCoreApp, true, false, false},
    {"QMTool", &Manager::repairQMTool, true, true, false},
    {"FinderCM", &Manager::repairZIPArchiveItem, false, false, false},
    {"QMToolRoot", &Manager::repairQMToolRoot, false, true, false},
    {"Framework", &Manager::repairFramework, false, false, true},
    {"Bundle", &Manager::repairBundle, false, false, true},
    {"FinderOverlayInsert", &Manager::repairZIPArchiveItem, false, false, false},
};

const RepairRule *ruleFor(const RequiredItem &item) {
    const auto type = textOf(item, kInstallType);
    for (const RepairRule &rule : kRepairRules) {
        const bool isLeftOut = (rule.isUpdateToolLeftOut && textOf(item, kName) == kUpdateTool) ||
                               (rule.isInstallerNeeded && !textOf(item, kInstaller));
        if (type == rule.type) {
            return isLeftOut ? nullptr : &rule;
        }
    }
    return nullptr;
}

} // namespace

bool InstallCheckManager::runRepairPass(const OnRepairStep &onStep) {
    constexpr std::chrono::seconds kPause(2);
    const auto tell = [&onStep](const std::string &name, const std::string &step) {
        if (onStep) {
            onStep(name, step);
        }
    };
    for (const Value &value : m_requiredItemsList) {
        const RequiredItem &item = value.dictionary();
        if (textOf(item, kName) == kUpdateTool) {
            tell(nameOf(item), "installing the update tool");
            if (!repairUpdateQM(item)) {
                logFailure(item);
                return false;
            }
        }
    }
    m_platform.clock.sleep(kPause);
    for (const Value &value : m_requiredItemsList) {
        const RequiredItem &item = value.dictionary();
        const RepairRule *const rule = ruleFor(item);
        if (rule != nullptr && isToBeRepaired(item, rule->isNotRequiredRepaired)) {
            tell(nameOf(item), "repairing what is \"" + statusKeyOf(item) + '"');
            if (!(this->*rule->repair)(item)) {
                logFailure(item);
                return false;
            }
        }
    }
    if (areIntel_10_5FixesRequired() && !installIntel_10_5_Fixes()) {
        logError("The fixes for this system could not be installed");
        return false;
    }
    m_platform.clock.sleep(kPause);
    return true;
}

bool InstallCheckManager::repairUpdateQM(const RequiredItem &item) {
    m_updateTool.verifyUpdateTool(nameOf(item)); // deliberate: installed anew whatever the answer is
    return isSuccess(m_updateTool.repairUpdateTool(pathToRequiredItemInResources(item),
                                                   pathToRequiredItemSignatureInResources(item)));
}

bool InstallCheckManager::repairCoreApp(const RequiredItem &item) {
    return !hasWrongPermissions(statusKeyOf(item)) ||
           isSuccess(m_updateTool.repairCoreAppPermissions(pathToRequiredItemInResources(item)));
}

bool InstallCheckManager::repairQMTool(const RequiredItem &item) {
    const std::string status = statusKeyOf(item);
    if (isMissingOrOld(status)) {
        return isSuccess(m_updateTool.repairQMTool(pathToRequiredItemInResources(item),
                                                   pathToRequiredItemSignatureInResources(item)));
    }
    return hasWrongPermissions(status) && isSuccess(m_updateTool.repairQMToolPermissions(nameOf(item)));
}

bool InstallCheckManager::repairQMToolRoot(const RequiredItem &item) {
    const std::string status = statusKeyOf(item);
    if (isMissingOrOld(status)) {
        return isSuccess(m_updateTool.repairQMToolRoot(pathToRequiredItemInResources(item),
                                                       pathToRequiredItemSignatureInResources(item)));
    }
    return hasWrongPermissions(status) && isSuccess(m_updateTool.repairQMToolRootPermissions(nameOf(item)));
}

bool InstallCheckManager::repairFramework(const RequiredItem &item) {
    return repairUsingPackage(item, &UpdateToolManager::repairFrameworkUsingPackage);
}

bool InstallCheckManager::repairBundle(const RequiredItem &item) {
    return repairUsingPackage(item, &UpdateToolManager::repairBundleUsingPackage);
}

bool InstallCheckManager::repairZIPArchiveItem(const RequiredItem &item) {
    return !isMissingOrOld(statusKeyOf(item)) ||
           isSuccess(m_updateTool.repairZIPArchive(pathToRequiredItemInResources(item),
                                                   pathToRequiredItemSignatureInResources(item),
                                                   textOf(item, kInstallPath).value_or("")));
}

/// A bundle whose version can't be read has no repair, and fails.
bool InstallCheckManager::repairUsingPackage(const RequiredItem &item,
                                             std::int32_t (UpdateToolManager::*repair)(const std::string &)) {
    return isMissingOrOld(statusKeyOf(item)) &&
           isSuccess((m_updateTool.*repair)(pathToRequiredItemInstallerInResources(item)));
}

bool InstallCheckManager::isToBeRepaired(const RequiredItem &item, bool isNotRequiredRepaired) const {
    const std::string status = statusKeyOf(item);
    return status != "OK" && (isNotRequiredRepaired || status != "Not Required");
}

std::string InstallCheckManager::statusKeyOf(const RequiredItem &item) const {
    const auto place = std::find_if(m_requiredItemsList.begin(), m_requiredItemsList.end(),
                                    [&item](const Value &other) { return other.dictionary() == item; });
    const auto index = static_cast<size_t>(place - m_requiredItemsList.begin());
    return index < m_requiredItemsStatusKeys.size() ? m_requiredItemsStatusKeys[index] : "";
}

} // namespace quillmark
