#include "tools/UpdateToolManager.h"

#include "accounts/KeyList.h"
#include "platform/Authorization.h"
#include "platform/HomeFolder.h"
#include "platform/Path.h"
#include "platform/Platform.h"
#include "platform/Tasks.h"
#include "platform/Workspace.h"
#include "tools/Applications.h"
#include "tools/LaunchException.h"
#include "utils/ErrorText.h"
#include "utils/FileManager.h"
#include "utils/Folders.h"
#include "utils/FormattedText.h"
#include "utils/Log.h"
#include "utils/String+Substring.h"

#include <QFile>
#include <memory>

namespace quillmark {

namespace {

constexpr QLatin1StringView kUpdateTool("updateqm");

/// The mode of a tool that acts as root: set-user-ID, and executable by everybody.
constexpr quint32 kToolMode = 04755;

} // namespace

UpdateToolManager &UpdateToolManager::sharedManager() {
    static auto &manager = *new UpdateToolManager(platform()); // never destroyed: other threads may ask until the end
    return manager;
}

UpdateToolManager::UpdateToolManager(const Platform &platform) : UpdateToolManager(platform, QString(kToolPath)) {}

UpdateToolManager::UpdateToolManager(const Platform &platform, QString toolPathFormat, QString macFuseLog)
    : m_platform(platform), m_toolPathFormat(std::move(toolPathFormat)), m_macFuseLog(std::move(macFuseLog)) {}

qint32 UpdateToolManager::repairCoreAppPermissions(const QString &path) {
    return runCommand({QStringLiteral("repaircore"), path});
}

qint32 UpdateToolManager::repairQMTool(const QString &path, const QString &signaturePath) {
    return runCommand({QStringLiteral("repairother"), path, signaturePath});
}

qint32 UpdateToolManager::repairQMToolPermissions(const QString &name) {
    return runCommand({QStringLiteral("repairpermissionsother"), name});
}

qint32 UpdateToolManager::repairBundleUsingPackage(const QString &packagePath) {
    return runCommand({QStringLiteral("repairpackage"), packagePath});
}

qint32 UpdateToolManager::repairFrameworkUsingPackage(const QString &packagePath) {
    m_status = kCommandBegun;
    const qint32 result = runUpdateTool({QStringLiteral("repairpackage"), packagePath}, true);
    if (hasCaseInsensitiveSubstring(packagePath, u"MacFUSE")) {
        try {
            keepMacFuseLog();
        } catch (const Exception &exception) {
            logErrorException(exception);
        }
    }
    if (result == kSucceeded) {
        m_status = kSucceeded;
    }
    return result;
}

qint32 UpdateToolManager::repairQMToolRootPermissions(const QString &name) {
    return runCommand({QStringLiteral("repairpermissionsotherroot"), name});
}

qint32 UpdateToolManager::repairZIPArchive(const QString &archivePath, const QString &signaturePath,
                                           const QString &installPath) {
    return runCommand({QStringLiteral("repairzipitem"), archivePath, signaturePath, installPath});
}

qint32 UpdateToolManager::repairIntel10_5(const QString &path, const QString &signaturePath) {
    return runCommand({QStringLiteral("repairintel10_5"), path, signaturePath});
}

qint32 UpdateToolManager::installClientUpdate(const QString &packagePath, const QString &signaturePath,
                                              const QString &installPath) {
    return runCommand({QStringLiteral("applyfullupdate"), packagePath, signaturePath, installPath});
}

qint32 UpdateToolManager::repairMonoKeypairPermissions() {
    return runCommand({QStringLiteral("fixmonokeypairs"),
                       appendingPathComponent(qtText(homeFolder()), QStringLiteral(".config/.mono/keypairs"))});
}

qint32 UpdateToolManager::repairPermissions() {
    return begin([this] { return runUpdateToolAsAdmin({"repairpermissions"}); });
}

qint32 UpdateToolManager::repairUpdateTool(const QString &toolPath, const QString &updateQMSignaturePath) {
    return begin([&] {
        logDetail("updateQMSignaturePath is %@", updateQMSignaturePath);
        return runUninstalledUpdateToolAsAdmin(toolPath, {"repair", updateQMSignaturePath.toStdString()});
    });
}

qint32 UpdateToolManager::repairQMToolRoot(const QString &path, const QString &signaturePath) {
    m_status = kCommandBegun;
    const qint32 result = runUpdateTool({QStringLiteral("repairotherroot"), path, signaturePath}, true);
    if (result != kSucceeded) {
        return result;
    }
    if (const auto error = restartFinder()) {
        m_failureReason = nserrorToString(*error);
        logError("repairQMToolRoot failed (%@)", m_failureReason);
        return kCommandBegun;
    }
    m_status = kSucceeded;
    return result;
}

qint32 UpdateToolManager::verifyUpdateTool(const QString &name) {
    const QString path = installedTool(name);
    const FileManager &files = __QMCurrentThreadFileManager();
    if (!files.fileExists(path)) {
        m_status = kToolMissing;
        return m_status;
    }
    const auto attributes = files.attributes(path);
    const bool mayActAsRoot =
        attributes && attributes->ownerAccountName == u"root" && attributes->posixPermissions == kToolMode;
    m_status = mayActAsRoot ? kSucceeded : kToolHasWrongPermissions;
    return m_status;
}

qint32 UpdateToolManager::runUpdateTool(const QStringList &arguments, bool waitUntilExit) {
    return runExe(installedTool(kUpdateTool), arguments, waitUntilExit);
}

qint32 UpdateToolManager::runExe(const QString &path, const QStringList &arguments, bool waitUntilExit) {
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
    m_failureReason.clear();
    logVerbose("UpdateToolManager:runExe: Succeeded running \"%@\"", path);
    return kSucceeded;
}

qint32 UpdateToolManager::runUpdateToolAsAdmin(const std::vector<std::string> &arguments) {
    return runAsAdmin(QStringLiteral("runUpdateToolAsAdmin"), installedTool(kUpdateTool), arguments, false);
}

qint32 UpdateToolManager::runUninstalledUpdateToolAsAdmin(const QString &toolPath,
                                                          const std::vector<std::string> &arguments) {
    return runAsAdmin(QStringLiteral("runUninstalledUpdateToolAsAdmin"), toolPath, arguments, true);
}

qint32 UpdateToolManager::runAsAdmin(const QString &operation, const QString &toolPath,
                                     const std::vector<std::string> &arguments, bool isPathLogged) {
    logNormal("UpdateToolManager:%@: Starting...", operation);
    std::unique_ptr<Authorization::Reference> reference;
    if (m_platform.authorization.create(reference) != 0) {
        m_failureReason = QStringLiteral("there can be no administrator rights here");
        return kRunFailed;
    }
    constexpr quint32 kFlags =
        kAuthorizationInteractionAllowed | kAuthorizationExtendRights | kAuthorizationPreAuthorize;
    if (const qint32 status = reference->copyRights(kAuthorizationRightAdmin, kFlags); status != 0) {
        m_failureReason = formatted("administrator rights were not given (status %d)", status);
        logError("UpdateToolManager:%@: AuthorizationCopyRights failed (OSStatus %d)", operation, status);
        return kRunFailed;
    }
    if (isPathLogged) {
        logDetail("Running %@", toolPath);
    }
    const qint32 status = reference->executeWithPrivileges(toolPath.toStdString(), arguments, nullptr);
    reference.reset();
    if (status != 0) {
        m_status = kRunFailed;
        m_failureReason = formatted("\"%@\" could not be run as the administrator (status %d)", toolPath, status);
        logError("UpdateToolManager:%@: AuthorizationExecuteWithPrivileges failed (OSStatus %d)", operation, status);
    } else {
        m_status = kSucceeded;
        m_failureReason.clear();
        logNormal("UpdateToolManager:%@: Succeeded", operation);
    }
    return m_status;
}

std::optional<Error> UpdateToolManager::restartFinder() {
    constexpr double kPatience = 4.0; // seconds
    auto error = quitApplication(QStringLiteral("com.apple.finder"), true, kPatience);
    if (error && error->code != kQuitTimedOut) {
        return error;
    }
    if (error) {
        logVerbose("Didn't see Finder restart - continue anyway");
    }
    const QString finder = QStringLiteral("/System/Library/CoreServices/Finder.app");
    logVerbose("Launching \"%@\"...", finder);
    const bool isLaunched = m_platform.workspace.launchApplication(finder);
    logVerbose("Launched \"%@\"", finder); // deliberate: also when it was not
    return isLaunched ? std::nullopt : std::optional(launchFailed(finder));
}

void UpdateToolManager::keepMacFuseLog() {
    const QString folder = expandingTilde(QStringLiteral("~/Library/Logs/Quillmark/MacFUSE"));
    const QString target = folder + QStringLiteral("/macfuse-install.log");
    const FileManager &files = __QMCurrentThreadFileManager();
    if (!files.fileExists(m_macFuseLog)) {
        logVerbose("\"%@\" doesn't exists - no MacFUSE log will be available", m_macFuseLog);
        return;
    }
    ensureFolderPathExists(folder);
    logVerbose(R"(Copying "%@" to "%@"...)", m_macFuseLog, target);
    // Anybody may have put it there.
    constexpr qint64 kLargestLog = qint64{16} << 20U; // bytes
    const auto error = files.isTrustedFile(m_macFuseLog, kLargestLog)
                           ? files.copyItem(m_macFuseLog, target)
                           : Error{kPosixErrorDomain,
                                   EACCES,
                                   {{kLocalizedFailureReasonKey, QStringLiteral("It is no file of a trusted user's")},
                                    {kLocalizedDescriptionKey, posixErrorToString(EACCES)}}};
    if (error) {
        logError(R"(Failed to copy "%@" to "%@" (%@))", m_macFuseLog, target, nserrorToString(*error));
    } else {
        logVerbose(R"(Copied "%@" to "%@" - MacFUSE log available)", m_macFuseLog, target);
    }
}

std::optional<int> UpdateToolManager::launch(const QString &path, const QStringList &arguments, bool waitUntilExit) {
    if (!waitUntilExit && m_platform.tasks.runUnwaited(path, arguments)) {
        return std::nullopt;
    }
    const auto status = waitUntilExit ? m_platform.tasks.run(path, arguments, QString()) : std::nullopt;
    if (!status) {
        throw launchException();
    }
    return status;
}

QString UpdateToolManager::installedTool(const QString &name) const { return formatted(m_toolPathFormat, name); }

qint32 UpdateToolManager::begin(const std::function<qint32()> &run) {
    m_status = kCommandBegun;
    const qint32 result = run();
    if (result == kSucceeded) {
        m_status = kSucceeded;
    }
    return result;
}

qint32 UpdateToolManager::runCommand(const QStringList &arguments) {
    return begin([&] { return runUpdateTool(arguments, true); });
}

} // namespace quillmark
