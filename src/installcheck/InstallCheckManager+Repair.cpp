#include "accounts/KeyList.h"
#include "installcheck/InstallCheckManager.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "tools/UpdateToolManager.h"
#include "utils/Log.h"

namespace quillmark {

namespace {

constexpr QStringView kUpdateTool = u"updateqm";

bool isMissingOrOld(const QString &status) { return status == u"Missing" || status == u"Old Version"; }

bool hasWrongPermissions(const QString &status) { return status == u"Wrong Permissions"; }

/// What the update tool itself says of it goes to standard error.
void logFailure(const RequiredItem &item) { logError("\"%@\" could not be repaired", textOf(item, kName)); }

bool isSuccess(qint32 result) { return result == UpdateToolManager::kSucceeded; }

/// How the second pass treats the items of a type.
struct RepairRule {
    QStringView type;
    bool (InstallCheckManager::*repair)(const RequiredItem &item) = nullptr;
    bool isNotRequiredRepaired = false; ///< such a status does not keep the item from being repaired
    bool isUpdateToolLeftOut = false;   ///< the first pass has seen to it
    bool isInstallerNeeded = false;     ///< without one there is nothing to repair it with
};

using Manager = InstallCheckManager;

constexpr RepairRule kRepairRules[] = {
    {u"CoreApp", &Manager::repairCoreApp, true, false, false},
    {u"QMTool", &Manager::repairQMTool, true, true, false},
    {u"FinderCM", &Manager::repairZIPArchiveItem, false, false, false},
    {u"QMToolRoot", &Manager::repairQMToolRoot, false, true, false},
    {u"Framework", &Manager::repairFramework, false, false, true},
    {u"Bundle", &Manager::repairBundle, false, false, true},
    {u"FinderOverlayInsert", &Manager::repairZIPArchiveItem, false, false, false},
};

const RepairRule *ruleFor(const RequiredItem &item) {
    const QString type = textOf(item, kInstallType);
    for (const RepairRule &rule : kRepairRules) {
        const bool isLeftOut = (rule.isUpdateToolLeftOut && textOf(item, kName) == kUpdateTool) ||
                               (rule.isInstallerNeeded && textOf(item, kInstaller).isNull());
        if (rule.type == type) {
            return isLeftOut ? nullptr : &rule;
        }
    }
    return nullptr;
}

} // namespace

bool InstallCheckManager::runRepairPass(const OnRepairStep &onStep) {
    constexpr std::chrono::seconds kPause(2);
    const auto tell = [&onStep](const QString &name, const QString &step) {
        if (onStep) {
            onStep(name, step);
        }
    };
    for (const QVariant &value : m_requiredItemsList) {
        const RequiredItem item = value.toMap();
        if (textOf(item, kName) == kUpdateTool) {
            tell(textOf(item, kName), QStringLiteral("installing the update tool"));
            if (!repairUpdateQM(item)) {
                logFailure(item);
                return false;
            }
        }
    }
    m_platform.clock.sleep(kPause);
    for (const QVariant &value : m_requiredItemsList) {
        const RequiredItem item = value.toMap();
        const RepairRule *const rule = ruleFor(item);
        if (rule != nullptr && isToBeRepaired(item, rule->isNotRequiredRepaired)) {
            tell(textOf(item, kName), QStringLiteral("repairing what is \"%1\"").arg(statusKeyOf(item)));
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
    m_updateTool.verifyUpdateTool(textOf(item, kName)); // deliberate: installed anew whatever the answer is
    return isSuccess(m_updateTool.repairUpdateTool(pathToRequiredItemInResources(item),
                                                   pathToRequiredItemSignatureInResources(item)));
}

bool InstallCheckManager::repairCoreApp(const RequiredItem &item) {
    return !hasWrongPermissions(statusKeyOf(item)) ||
           isSuccess(m_updateTool.repairCoreAppPermissions(pathToRequiredItemInResources(item)));
}

bool InstallCheckManager::repairQMTool(const RequiredItem &item) {
    const QString status = statusKeyOf(item);
    if (isMissingOrOld(status)) {
        return isSuccess(m_updateTool.repairQMTool(pathToRequiredItemInResources(item),
                                                   pathToRequiredItemSignatureInResources(item)));
    }
    return hasWrongPermissions(status) && isSuccess(m_updateTool.repairQMToolPermissions(textOf(item, kName)));
}

bool InstallCheckManager::repairQMToolRoot(const RequiredItem &item) {
    const QString status = statusKeyOf(item);
    if (isMissingOrOld(status)) {
        return isSuccess(m_updateTool.repairQMToolRoot(pathToRequiredItemInResources(item),
                                                       pathToRequiredItemSignatureInResources(item)));
    }
    return hasWrongPermissions(status) && isSuccess(m_updateTool.repairQMToolRootPermissions(textOf(item, kName)));
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
                                                   textOf(item, kInstallPath)));
}

/// A bundle whose version can't be read has no repair, and fails.
bool InstallCheckManager::repairUsingPackage(const RequiredItem &item,
                                             qint32 (UpdateToolManager::*repair)(const QString &)) {
    return isMissingOrOld(statusKeyOf(item)) &&
           isSuccess((m_updateTool.*repair)(pathToRequiredItemInstallerInResources(item)));
}

bool InstallCheckManager::isToBeRepaired(const RequiredItem &item, bool isNotRequiredRepaired) const {
    const QString status = statusKeyOf(item);
    return status != u"OK" && (isNotRequiredRepaired || status != u"Not Required");
}

QString InstallCheckManager::statusKeyOf(const RequiredItem &item) const {
    return m_requiredItemsStatusKeys.value(m_requiredItemsList.indexOf(item));
}

} // namespace quillmark
