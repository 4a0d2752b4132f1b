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

std::string nameOf(const RequiredItem &item) { return textOf(item, kName).value_or(""); }

/// What the update tool itself says of it goes to standard error.
void logFailure(const RequiredItem &item) { logError("\"%@\" could not be repaired", textOf(item, kName)); }

bool isSuccess(std::int32_t result) { return result == UpdateToolManager::kSucceeded; }

/// How the second pass treats the items of a type.
struct RepairRule {
    std::string_view type;
    bool (InstallCheckManager::*repair)(const RequiredItem &item) = nullptr;
    bool isUpdateToolLeftOut = false; ///< the first pass has seen to it
    bool isInstallerNeeded = false;   ///< without one there is nothing to repair it with
};

using Manager = InstallCheckManager;

constexpr RepairRule kRepairRules[] = {
    {"CoreApp", &Manager::repairCoreApp, false, false},
    {"QMTool", &Manager::repairQMTool, true, false},
    {"FinderCM", &Manager::repairZIPArchiveItem, false, false},
    {"QMToolRoot", &Manager::repairQMToolRoot, true, false},
    {"Framework", &Manager::repairFramework, false, true},
    {"Bundle", &Manager::repairBundle, false, true},
    {"FinderOverlayInsert", &Manager::repairZIPArchiveItem, false, false},
};

const RepairRule *ruleFor(const RequiredItem &item) {
    const auto *const rule =
        std::find_if(std::begin(kRepairRules), std::end(kRepairRules),
                     [type = textOf(item, kInstallType)](const RepairRule &each) { return type == each.type; });
    const bool isLeftOut = rule == std::end(kRepairRules) ||
                           (rule->isUpdateToolLeftOut && textOf(item, kName) == kUpdateTool) ||
                           (rule->isInstallerNeeded && !textOf(item, kInstaller));
    return isLeftOut ? nullptr : rule;
}

} // namespace

bool InstallCheckManager::runRepairPass(const OnRepairStep &onStep) {
    constexpr std::chrono::seconds kPause(2);
    const auto tell = [&onStep](const std::string &name, const std::string &step) {
        if (onStep) {
            onStep(name, step);
        }
    };
    for (const Value &value : requiredItemsList()) {
        const RequiredItem &item = value.dictionary();
        if (textOf(item, kName) == kUpdateTool) {
            tell(nameOf(item), "installing the update tool");
            if (!repairUpdateQM(item)) {
                logFailure(item);
                return false;
            }
        }
    }
    platform().clock.sleep(kPause);
    for (const Value &value : requiredItemsList()) {
        const RequiredItem &item = value.dictionary();
        const RepairRule *const rule = ruleFor(item);
        const auto status = rule != nullptr ? statusOf(item) : ItemStatus::InOrder;
        if (status == ItemStatus::InOrder || status == ItemStatus::NotRequired) {
            continue;
        }
        tell(nameOf(item), std::string("repairing what is \"") + (status ? keyOf(*status) : "") + '"');
        if (!(this->*rule->repair)(item)) {
            logFailure(item);
            return false;
        }
    }
    if (areIntel_10_5FixesRequired() && !installIntel_10_5_Fixes()) {
        logError("The fixes for this system could not be installed");
        return false;
    }
    platform().clock.sleep(kPause);
    return true;
}

bool InstallCheckManager::repairUpdateQM(const RequiredItem &item) {
    m_updateTool.verifyUpdateTool(nameOf(item)); // deliberate: installed again whatever the answer is
    return isSuccess(m_updateTool.repairUpdateTool(pathToRequiredItemInResources(item),
                                                   pathToRequiredItemSignatureInResources(item)));
}

bool InstallCheckManager::repairCoreApp(const RequiredItem &item) {
    return statusOf(item) != ItemStatus::WrongPermissions ||
           isSuccess(m_updateTool.repairCoreAppPermissions(pathToRequiredItemInResources(item)));
}

bool InstallCheckManager::repairQMTool(const RequiredItem &item) {
    return repairTool(item, &UpdateToolManager::repairQMTool, &UpdateToolManager::repairQMToolPermissions);
}

bool InstallCheckManager::repairQMToolRoot(const RequiredItem &item) {
    return repairTool(item, &UpdateToolManager::repairQMToolRoot, &UpdateToolManager::repairQMToolRootPermissions);
}

bool InstallCheckManager::repairFramework(const RequiredItem &item) {
    return repairUsingPackage(item, &UpdateToolManager::repairFrameworkUsingPackage);
}

bool InstallCheckManager::repairBundle(const RequiredItem &item) {
    return repairUsingPackage(item, &UpdateToolManager::repairBundleUsingPackage);
}

bool InstallCheckManager::repairZIPArchiveItem(const RequiredItem &item) {
    return !isMissingOrOld(item) ||
           isSuccess(m_updateTool.repairZIPArchive(pathToRequiredItemInResources(item),
                                                   pathToRequiredItemSignatureInResources(item),
                                                   textOf(item, kInstallPath).value_or("")));
}

bool InstallCheckManager::repairTool(const RequiredItem &item, ToolRepair repair, PermissionsRepair repairPermissions) {
    if (isMissingOrOld(item)) {
        return isSuccess(
            (m_updateTool.*repair)(pathToRequiredItemInResources(item), pathToRequiredItemSignatureInResources(item)));
    }
    return statusOf(item) == ItemStatus::WrongPermissions && isSuccess((m_updateTool.*repairPermissions)(nameOf(item)));
}

/// A bundle whose version can't be read has no repair, and fails.
bool InstallCheckManager::repairUsingPackage(const RequiredItem &item,
                                             std::int32_t (UpdateToolManager::*repair)(const std::string &)) {
    return isMissingOrOld(item) && isSuccess((m_updateTool.*repair)(pathToRequiredItemInstallerInResources(item)));
}

std::optional<ItemStatus> InstallCheckManager::statusOf(const RequiredItem &item) const {
    const List &items = requiredItemsList();
    const auto place =
        std::find_if(items.begin(), items.end(), [&item](const Value &other) { return other.dictionary() == item; });
    const auto index = static_cast<size_t>(place - items.begin());
    return index < m_statuses.size() ? std::optional(m_statuses[index]) : std::nullopt;
}

bool InstallCheckManager::isMissingOrOld(const RequiredItem &item) const {
    const auto status = statusOf(item);
    return status == ItemStatus::Missing || status == ItemStatus::OldVersion;
}

} // namespace quillmark
