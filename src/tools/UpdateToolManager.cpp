#include "tools/UpdateToolManager.h"

#include "platform/Authorization.h"
#include "platform/Platform.h"
#include "platform/Tasks.h"
#include "platform/Workspace.h"
#include "platform/files/HomeFolder.h"
#include "platform/files/Path.h"
#include "tools/LaunchException.h"
#include "tools/LaunchedApplications.h"
#include "utils/ErrorText.h"
#include "utils/FileManager.h"
#include "utils/Folders.h"
#include "utils/FormattedText.h"
#include "utils/Log.h"
#include "utils/String+Substring.h"

#include <memory>

namespace quillmark {

namespace {

constexpr const char *kUpdateTool = "updateqm";

/// The mode of a tool that acts as root: set-user-ID, and executable by everybody.
constexpr std::uint32_t kToolMode = 04755;

} // namespace

UpdateToolManager &UpdateToolManager::sharedManager() {
    static auto &manager = *new UpdateToolManager; // never destroyed: other threads may ask until the end
    return manager;
}

std::int32_t UpdateToolManager::repairCoreAppPermissions(const std::string &path) {
    return runCommand({"repaircore", path});
}

std::int32_t UpdateToolManager::repairQMTool(const std::string &path, const std::string &signaturePath) {
    return runCommand({"repairother", path, signaturePath});
}

std::int32_t UpdateToolManager::repairQMToolPermissions(const std::string &name) {
    return runCommand({"repairpermissionsother", name});
}

std::int32_t UpdateToolManager::repairBundleUsingPackage(const std::string &packagePath) {
    return runCommand({"repairpackage", packagePath});
}

std::int32_t UpdateToolManager::repairFrameworkUsingPackage(const std::string &packagePath) {
    begin();
    const std::int32_t result = runUpdateTool({"repairpackage", packagePath}, true);
    if (hasCaseInsensitiveSubstring(packagePath, "MacFUSE")) {
        try {
            keepMacFuseLog();
        } catch (const Exception &exception) {
            logErrorException(exception);
        }
    }
    return finish(result);
}

std::int32_t UpdateToolManager::repairQMToolRootPermissions(const std::string &name) {
    return runCommand({"repairpermissionsotherroot", name});
}

std::int32_t UpdateToolManager::repairZIPArchive(const std::string &archivePath, const std::string &signaturePath,
                                                 const std::string &installPath) {
    return runCommand({"repairzipitem", archivePath, signaturePath, installPath});
}

std::int32_t UpdateToolManager::repairIntel10_5(const std::string &path, const std::string &signaturePath) {
    return runCommand({"repairintel10_5", path, signaturePath});
}

std::int32_t UpdateToolManager::installClientUpdate(const std::string &packagePath, const std::string &signaturePath,
                                                    const std::string &installPath) {
    return runCommand({"applyfullupdate", packagePath, signaturePath, installPath});
}

std::int32_t UpdateToolManager::repairMonoKeypairPermissions() {
    return runCommand({"fixmonokeypairs", appendingPathComponent(homeFolder(), ".config/.mono/keypairs")});
}

std::int32_t UpdateToolManager::repairPermissions() {
    begin();
    return finish(runUpdateToolAsAdmin({"repairpermissions"}));
}

std::int32_t UpdateToolManager::repairUpdateTool(const std::string &toolPath,
                                                 const std::string &updateQMSignaturePath) {
    begin();
    logDetail("updateQMSignaturePath is %@", updateQMSignaturePath);
    return finish(runUninstalledUpdateToolAsAdmin(toolPath, {"repair", updateQMSignaturePath}));
}

std::int32_t UpdateToolManager::repairQMToolRoot(const std::string &path, const std::string &signaturePath) {
    begin();
    const std::int32_t result = runUpdateTool({"repairotherroot", path, signaturePath}, true);
    if (const auto error = result == kSucceeded ? restartFinder() : std::nullopt) {
        m_failureReason = nserrorToString(*error);
        logError("repairQMToolRoot failed (%@)", m_failureReason);
        return kCommandBegun;
    }
    return finish(result);
}

std::int32_t UpdateToolManager::verifyUpdateTool(const std::string &name) {
    const std::string path = installedTool(name);
    const auto attributes = __QMCurrentThreadFileManager().attributes(path);
    const bool mayActAsRoot =
        attributes && attributes->ownerAccountName == "root" && attributes->posixPermissions == kToolMode;
    m_status = mayActAsRoot ? kSucceeded : kToolHasWrongPermissions;
    if (!__QMCurrentThreadFileManager().fileExists(path)) {
        m_status = kToolMissing;
    }
    return m_status;
}

std::int32_t UpdateToolManager::runUpdateTool(const std::vector<std::string> &arguments, bool waitUntilExit) {
    return runExe(installedTool(kUpdateTool), arguments, waitUntilExit);
}

std::int32_t UpdateToolManager::runExe(const std::string &path, const std::vector<std::string> &arguments,
                                       bool waitUntilExit) {
    logVerbose("UpdateToolManager:runExe: Running \"%@\"...", path);
    bool isSuccess = false;
    try {
        // Deliberate: nobody learns what came of a run that is not waited for, so it counts as failed.
        const auto status = launch(path, arguments, waitUntilExit);
        isSuccess = status == 0;
        m_failureReason = status ? formatted("\"%@\" ended with status %d", path, *status)
                                 : formatted("nobody waited for \"%@\"", path);
    } catch (const Exception &exception) {
        m_failureReason = formatted("\"%@\" could not be run", path);
        logError("UpdateToolManager:runExe: Exception during running \"%@\" (%@)", path,
                 errorExceptionToString(exception));
    }
    if (!isSuccess) {
        logError("UpdateToolManager:runExe: Failed running \"%@\"", path);
        return kRunFailed;
    }
    m_failureReason.reset();
    logVerbose("UpdateToolManager:runExe: Succeeded running \"%@\"", path);
    return kSucceeded;
}

std::int32_t UpdateToolManager::runUpdateToolAsAdmin(const std::vector<std::string> &arguments) {
    return runAsAdmin("runUpdateToolAsAdmin", installedTool(kUpdateTool), arguments, false);
}

std::int32_t UpdateToolManager::runUninstalledUpdateToolAsAdmin(const std::string &toolPath,
                                                                const std::vector<std::string> &arguments) {
    return runAsAdmin("runUninstalledUpdateToolAsAdmin", toolPath, arguments, true);
}

std::int32_t UpdateToolManager::runAsAdmin(const std::string &operation, const std::string &toolPath,
                                           const std::vector<std::string> &arguments, bool isPathLogged) {
    logNormal("UpdateToolManager:%@: Starting...", operation);
    std::unique_ptr<Authorization::Reference> reference;
    if (platform().authorization.create(reference) != 0) {
        m_failureReason = "there can be no administrator rights here";
        return kRunFailed;
    }
    constexpr std::uint32_t kFlags =
        kAuthorizationInteractionAllowed | kAuthorizationExtendRights | kAuthorizationPreAuthorize;
    if (const std::int32_t status = reference->copyRights(kAuthorizationRightAdmin, kFlags); status != 0) {
        m_failureReason = formatted("administrator rights were not given (status %d)", status);
        logError("UpdateToolManager:%@: AuthorizationCopyRights failed (OSStatus %d)", operation, status);
        return kRunFailed;
    }
    if (isPathLogged) {
        logDetail("Running %@", toolPath);
    }
    const std::int32_t status = reference->executeWithPrivileges(toolPath, arguments, nullptr);
    reference.reset();
    if (status != 0) {
        m_status = kRunFailed;
        m_failureReason = formatted("\"%@\" could not be run as the administrator (status %d)", toolPath, status);
        logError("UpdateToolManager:%@: AuthorizationExecuteWithPrivileges failed (OSStatus %d)", operation, status);
    } else {
        m_status = kSucceeded;
        m_failureReason.reset();
        logNormal("UpdateToolManager:%@: Succeeded", operation);
    }
    return m_status;
}

std::optional<Error> UpdateToolManager::restartFinder() {
    constexpr double kPatience = 4.0; // seconds
    auto error = quitApplication("com.apple.finder", true, kPatience);
    if (error && error->code != kQuitTimedOut) {
        return error;
    }
    if (error) {
        logVerbose("Didn't see Finder restart - continue anyway");
    }
    const std::string finder = "/System/Library/CoreServices/Finder.app";
    logVerbose("Launching \"%@\"...", finder);
    const bool isLaunched = platform().workspace.launchApplication(finder);
    logVerbose("Launched \"%@\"", finder); // deliberate: also when it was not
    return isLaunched ? std::nullopt : std::optional(launchFailed(finder));
}

void UpdateToolManager::keepMacFuseLog() {
    const std::string folder = expandingTilde("~/Library/Logs/Quillmark/MacFUSE");
    const std::string target = folder + "/macfuse-install.log";
    const FileManager &files = __QMCurrentThreadFileManager();
    if (!files.fileExists(m_macFuseLog)) {
        logVerbose("\"%@\" doesn't exists - no MacFUSE log will be available", m_macFuseLog);
        return;
    }
    ensureFolderPathExists(folder);
    logVerbose(R"(Copying "%@" to "%@"...)", m_macFuseLog, target);
    // Anybody may have put it there.
    constexpr std::int64_t kLargestLog = std::int64_t{16} << 20U; // bytes
    const auto error = files.isTrustedFile(m_macFuseLog, kLargestLog)
                           ? files.copyItem(m_macFuseLog, target)
                           : posixError(EACCES, "It is not a trusted user's file");
    if (error) {
        logError(R"(Failed to copy "%@" to "%@" (%@))", m_macFuseLog, target, nserrorToString(*error));
    } else {
        logVerbose(R"(Copied "%@" to "%@" - MacFUSE log available)", m_macFuseLog, target);
    }
}

std::optional<int> UpdateToolManager::launch(const std::string &path, const std::vector<std::string> &arguments,
                                             bool waitUntilExit) {
    if (!waitUntilExit && platform().tasks.runUnwaited(path, arguments)) {
        return std::nullopt;
    }
    const auto status = waitUntilExit ? platform().tasks.run(path, arguments, std::nullopt) : std::nullopt;
    if (!status) {
        throw launchException();
    }
    return status;
}

std::string UpdateToolManager::installedTool(const std::string &name) const {
    return formatted(m_toolPathFormat, name);
}

std::int32_t UpdateToolManager::finish(std::int32_t result) {
    if (result == kSucceeded) {
        m_status = kSucceeded;
    }
    return result;
}

std::int32_t UpdateToolManager::runCommand(const std::vector<std::string> &arguments) {
    begin();
    return finish(runUpdateTool(arguments, true));
}

} // namespace quillmark
