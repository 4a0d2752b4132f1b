#include "desktop/MoveToApplications.h"

#include "desktop/MoveOffer.h"
#include "platform/Alerts.h"
#include "platform/Application.h"
#include "platform/Authorization.h"
#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "platform/Tasks.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "platform/files/HomeFolder.h"
#include "platform/files/Path.h"
#include "platform/values/WhiteSpace.h"
#include "utils/Error.h"
#include "utils/ErrorText.h"
#include "utils/FileManager.h"
#include "utils/Log.h"

#include <algorithm>
#include <functional>
#include <sys/wait.h>

namespace quillmark {

namespace {

enum class Outcome { Moved, Canceled, Failed };

/// \returns true when the user wants the move.
bool askUser(const MovePlan &plan, LocalizedStrings &strings) {
    const bool hasSuppression = abilitiesOfWindowLibrary(platform().systemInfo.appKitVersion()).hasSuppression;
    AlertDescription alert;
    alert.windowTitle = strings.localisedString("ProductName");
    alert.messageText = strings.localisedString("Move to Applications folder?");
    alert.informativeText = plan.informativeText;
    alert.buttons = {strings.localisedString("Move to Applications Folder"), strings.localisedString("Do Not Move")};
    alert.escapeButton = 1;
    if (hasSuppression) {
        alert.suppressionText = strings.localisedString("Do not show this message again");
    }
    if (!platform().application.isActive()) {
        platform().application.activateIgnoringOtherApps();
    }
    _flushLog(); // the user may look at the log while the alert waits for him
    const AlertAnswer answer = platform().alerts.runModal(alert);
    if (answer.button == 0) {
        return true;
    }
    if (!hasSuppression || answer.isSuppressionChecked) {
        platform().userDefaults.setObject(kMoveAlertSuppress, true);
        if (!platform().userDefaults.synchronize()) {
            logError("The preferences \"%@\" %@: the user will be asked again", platform().userDefaults.file(),
                     platform().userDefaults.problem());
        }
    }
    return false;
}

/// What holds the application itself, or is to hold it, does not count as an older copy, whatever the list says.
bool mayBeRemoved(const std::string &path, const MovePlan &plan) {
    const FileManager &files = __QMCurrentThreadFileManager();
    const bool holdsApplication =
        files.isWithin(plan.source, path) || files.isWithin(deletingLastPathComponent(plan.destination), path);
    if (holdsApplication) {
        logNormal("Not removing \"%@\": the application is in it", path);
    }
    return !holdsApplication;
}

/// Hands on each of the other bundles that is there when its turn has come, until one is not removed.
bool forEachOtherBundle(const MovePlan &plan, const std::function<bool(const std::string &)> &remove) {
    return std::all_of(gAlsoRemoveBundlePaths.begin(), gAlsoRemoveBundlePaths.end(), [&](const std::string &entry) {
        const std::string path = expandingTilde(entry);
        return !__QMCurrentThreadFileManager().fileExists(path) || !mayBeRemoved(path, plan) || remove(path);
    });
}

Outcome moveWithoutAuthorisation(const MovePlan &plan) {
    const FileManager &files = __QMCurrentThreadFileManager();
    if (files.fileExists(plan.destination) && !Trash(plan.destination)) {
        return Outcome::Failed;
    }
    forEachOtherBundle(plan, [](const std::string &path) {
        if (!Trash(path)) {
            logVerbose("Failed to trash \"%@\"", path);
        }
        return true;
    });
    const bool mayCopy = abilitiesOfWindowLibrary(platform().systemInfo.appKitVersion()).copiesBundles;
    const auto error = mayCopy ? files.copyItem(plan.source, plan.destination) : std::nullopt;
    if (mayCopy && !error) {
        return Outcome::Moved;
    }
    if (error) {
        logError("Could not copy '%@' to '%@' (%@)", plan.source, plan.destination, nserrorToString(*error));
    }
    logError("Could not copy myself to %@", plan.destination);
    return Outcome::Failed;
}

/// Runs a program as the administrator to its end. \returns its status as waitpid gives it; nothing when it could not
/// be started or waited for.
std::optional<int> runWithPrivileges(Authorization::Reference &reference, const char *program,
                                     const std::vector<std::string> &arguments) {
    if (reference.executeWithPrivileges(program, arguments, nullptr) != 0) {
        return std::nullopt;
    }
    return reference.waitForChild();
}

/// The same; true when it ended with status 0.
bool succeedsWithPrivileges(Authorization::Reference &reference, const char *program,
                            const std::vector<std::string> &arguments) {
    const auto status = runWithPrivileges(reference, program, arguments);
    return status && WIFEXITED(*status) && WEXITSTATUS(*status) == 0;
}

/// With the administrator's rights a path is not touched where others could make it lead to something else meanwhile.
bool isOutOfReach(const std::string &path) {
    const auto folder = __QMCurrentThreadFileManager().folderOfOthers(path);
    if (folder) {
        logError(R"(Leaving "%@" alone: others can change what is in "%@")", path, *folder);
    }
    return !folder;
}

/// Removes what is in the way and copies the bundle, as the administrator. \returns false when a step fails.
bool replaceWithPrivileges(const MovePlan &plan, Authorization::Reference &reference) {
    const auto remove = [&reference](const std::string &path) {
        logVerbose("Removing \"%@\"", path);
        const auto status = runWithPrivileges(reference, "/bin/rm", {"-rf", path});
        return status && !WIFSIGNALED(*status); // deliberate: the exit code is not looked at
    };
    const std::string destination = expandingTilde(plan.destination);
    if (!isOutOfReach(destination) ||
        (__QMCurrentThreadFileManager().fileExists(destination) && !remove(destination)) ||
        !forEachOtherBundle(plan, [&remove](const std::string &path) { return !isOutOfReach(path) || remove(path); })) {
        return false;
    }
    const std::string folder = deletingLastPathComponent(destination);
    if (!__QMCurrentThreadFileManager().fileExists(folder)) { // as on systems that know no such folder
        logVerbose("Making \"%@\"", folder);
        if (!succeedsWithPrivileges(reference, "/bin/mkdir", {"-p", folder})) {
            return false;
        }
    }
    logVerbose(R"(Copying "%@" to "%@")", plan.source, plan.destination);
    return succeedsWithPrivileges(reference, "/bin/cp", {"-pR", plan.source, plan.destination});
}

Outcome moveWithAuthorisation(const MovePlan &plan) {
    const auto outcome = [&plan] {
        if (!plan.destination.ends_with(".app") || trimmed(plan.destination).empty() || trimmed(plan.source).empty()) {
            return Outcome::Failed;
        }
        logVerbose("Asking for authorisation...");
        std::unique_ptr<Authorization::Reference> reference;
        if (platform().authorization.create(reference) != 0) {
            return Outcome::Failed;
        }
        const std::int32_t status = reference->copyRights(kAuthorizationRightAdmin, kAuthorizationInteractionAllowed |
                                                                                        kAuthorizationExtendRights |
                                                                                        kAuthorizationPreAuthorize);
        if (status != 0) {
            logVerbose("Authorisation denied");
            return status == kAuthorizationCanceled ? Outcome::Canceled : Outcome::Failed;
        }
        return replaceWithPrivileges(plan, *reference) ? Outcome::Moved : Outcome::Failed;
    }();
    if (outcome == Outcome::Canceled) {
        logNormal("Not moving because user canceled authorization");
    } else if (outcome == Outcome::Failed) {
        logError("Could not copy myself to /Applications with authorization");
    }
    return outcome;
}

void tellFailure(LocalizedStrings &strings) {
    AlertDescription alert;
    alert.windowTitle = strings.localisedString("ProductName");
    alert.messageText = strings.localisedString("Could not move to Applications folder");
    alert.buttons = {strings.localisedString("OK")};
    _flushLog();
    platform().alerts.runModal(alert);
}

/// Starts a shell that outlives this process. It finds the moved bundle's own programs first.
void startShell(const std::string &command, const MovePlan &plan) {
    const std::string shell = "/bin/sh";
    if (!platform().tasks.start(shell, {"-c", command}, helpersFolder(plan.destination))) {
        logError(R"("%@" can't be started; open "%@" by hand)", shell, plan.destination);
    }
}

} // namespace

void PFAlsoRemoveBundles(const std::vector<std::string> &paths) { gAlsoRemoveBundlePaths = paths; }
void PFAltDstBundleName(const std::optional<std::string> &name) { gAltDstBundleName = name; }
void PFAltDstBundleParentPath(const std::optional<std::string> &path) { gAltDstBundleParentPath = path; }
void PFAltSrcBundlePath(const std::optional<std::string> &path) { gAltSrcBundlePath = path; }

void PFMoveToApplicationsFolderIfNecessary(LocalizedStrings &strings) {
    gAltSrcBundlePath.reset();
    gAltDstBundleParentPath.reset();
    if (!reasonToStay()) {
        PFMove(strings);
    }
}

void PFMove(LocalizedStrings &strings) {
    const MovePlan plan = planOfMove(strings);
    if (plan.obstacle) {
        logNormal("%@", plan.obstacle);
        return;
    }
    if (!askUser(plan, strings)) {
        return;
    }
    logNormal("Moving myself to the Applications folder");
    const Outcome outcome = plan.needsAuthorisation ? moveWithAuthorisation(plan) : moveWithoutAuthorisation(plan);
    if (outcome == Outcome::Failed) {
        tellFailure(strings);
    }
    if (outcome != Outcome::Moved) {
        return;
    }
    if (!plan.isOnDiskImage && !Trash(plan.source)) {
        logNormal("Warning! Could not delete application after moving it to Applications folder");
    }
    startShell(plan.relaunchCommand, plan);
    if (plan.detachCommand) {
        startShell(*plan.detachCommand, plan);
    }
    platform().application.terminate();
}

bool Trash(const std::string &path) {
    logVerbose("Trashing \"%@\"...", path);
    const bool isTrashed = platform().workspace.recycle(lastPathComponent(path), deletingLastPathComponent(path));
    if (isTrashed) {
        logVerbose("Trashed \"%@\"", path);
    } else {
        logError("Could not trash \"%@\"", path);
    }
    return isTrashed;
}

} // namespace quillmark
