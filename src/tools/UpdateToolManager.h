#pragma once

#include "accounts/KeyList.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quillmark {

struct Error;

/// Speaks to the update tool, which changes what only the administrator may. One operation for each of its commands;
/// each returns 0 on success. The paths are handed on as they are given.
///
/// Concurrency: calls wait for the tool's end; from one thread at a time.
class UpdateToolManager {
public:
    /// Values of status(), and what the operations return.
    static constexpr std::int32_t kSucceeded = 0;
    static constexpr std::int32_t kToolMissing = 1;
    static constexpr std::int32_t kToolHasWrongPermissions = 2;
    static constexpr std::int32_t kNothingDone = 3;
    static constexpr std::int32_t kRunFailed = 4;
    static constexpr std::int32_t kCommandBegun = 5;

    static UpdateToolManager &sharedManager();
    /// \param toolPathFormat where tools are installed; the file name of one takes the place of %@.
    /// \param macFuseLog where the installation of MacFUSE leaves its log.
    explicit UpdateToolManager(std::string toolPathFormat = std::string(kToolPath),
                               std::string macFuseLog = "/tmp/.macfuse-install.log")
        : m_toolPathFormat(std::move(toolPathFormat)), m_macFuseLog(std::move(macFuseLog)) {}

    /// What came of the last operation. A command that failed leaves kCommandBegun.
    std::int32_t status() const { return m_status; }
    /// Why the last run failed, for people; absent when it did not.
    std::optional<std::string> failureReason() const { return m_failureReason; }

    std::int32_t repairCoreAppPermissions(const std::string &path);
    std::int32_t repairQMTool(const std::string &path, const std::string &signaturePath);
    std::int32_t repairQMToolPermissions(const std::string &name);
    std::int32_t repairBundleUsingPackage(const std::string &packagePath);
    /// Afterwards keeps the installation log of MacFUSE, when that was the package.
    std::int32_t repairFrameworkUsingPackage(const std::string &packagePath);
    std::int32_t repairQMToolRootPermissions(const std::string &name);
    /// Afterwards restarts the Finder, which has loaded the old tool. \returns kCommandBegun when that fails.
    std::int32_t repairQMToolRoot(const std::string &path, const std::string &signaturePath);
    std::int32_t repairZIPArchive(const std::string &archivePath, const std::string &signaturePath,
                                  const std::string &installPath);
    std::int32_t repairIntel10_5(const std::string &path, const std::string &signaturePath);
    std::int32_t installClientUpdate(const std::string &packagePath, const std::string &signaturePath,
                                     const std::string &installPath);
    std::int32_t repairMonoKeypairPermissions();
    /// Runs the installed tool with administrator rights.
    std::int32_t repairPermissions();
    /// Runs a tool that is not installed yet with administrator rights, so that it installs itself.
    std::int32_t repairUpdateTool(const std::string &toolPath, const std::string &updateQMSignaturePath);

    /// Runs the overlay tool.
    std::int32_t insertFinderOverlayBundle();

    /// Looks whether a tool is there and may act as root. \returns kSucceeded, kToolMissing or
    /// kToolHasWrongPermissions, also as status().
    std::int32_t verifyUpdateTool(const std::string &name);

    std::int32_t runUpdateTool(const std::vector<std::string> &arguments, bool waitUntilExit);
    /// A run that is not waited for counts as failed.
    std::int32_t runExe(const std::string &path, const std::vector<std::string> &arguments, bool waitUntilExit);
    /// A run that is not waited for counts as succeeded. Raises an exception when the tool can't be started.
    std::int32_t runFinderOverlayTool(const std::vector<std::string> &arguments, bool waitUntilExit);
    /// Success means only that the tool was started. Nothing is logged, and status() stays, when there can be no
    /// authorization at all.
    std::int32_t runUpdateToolAsAdmin(const std::vector<std::string> &arguments);
    std::int32_t runUninstalledUpdateToolAsAdmin(const std::string &toolPath,
                                                 const std::vector<std::string> &arguments);

private:
    std::string installedTool(const std::string &name) const;
    /// \returns the exit status of a run that is waited for. Raises an exception when the tool can't be started.
    std::optional<int> launch(const std::string &path, const std::vector<std::string> &arguments, bool waitUntilExit);
    // What stands around every command. The first leaves kCommandBegun, and so does one that fails.
    void begin() { m_status = kCommandBegun; }
    std::int32_t finish(std::int32_t result);
    std::int32_t runCommand(const std::vector<std::string> &arguments);
    std::int32_t runAsAdmin(const std::string &operation, const std::string &toolPath,
                            const std::vector<std::string> &arguments, bool isPathLogged);
    void keepMacFuseLog();
    std::optional<Error> restartFinder();

    const std::string m_toolPathFormat;
    const std::string m_macFuseLog;
    std::int32_t m_status = kNothingDone;
    std::optional<std::string> m_failureReason;
    std::string updateToolPath; ///< deliberately neither set nor read: the path is always made of the format
};

} // namespace quillmark
