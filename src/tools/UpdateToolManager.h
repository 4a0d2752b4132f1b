#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace quillmark {

struct Error;
struct Platform;

/// Speaks to the update tool, which changes what only the administrator may. One operation for each of its commands;
/// each returns 0 on success. The paths are handed on as they are given.
///
/// Concurrency: calls wait for the tool's end; from one thread at a time.
class UpdateToolManager {
public:
    /// Values of status(), and what the operations return.
    static constexpr qint32 kSucceeded = 0;
    static constexpr qint32 kToolMissing = 1;
    static constexpr qint32 kToolHasWrongPermissions = 2;
    static constexpr qint32 kNothingDone = 3;
    static constexpr qint32 kRunFailed = 4;
    static constexpr qint32 kCommandBegun = 5;

    static UpdateToolManager &sharedManager();
    explicit UpdateToolManager(const Platform &platform);
    /// \param toolPathFormat where tools are installed; the file name of one takes the place of %@.
    /// \param macFuseLog where the installation of MacFUSE leaves its log.
    UpdateToolManager(const Platform &platform, QString toolPathFormat,
                      QString macFuseLog = QStringLiteral("/tmp/.macfuse-install.log"));

    /// What came of the last operation. A command that failed leaves kCommandBegun.
    qint32 status() const { return m_status; }
    /// Why the last run failed, for people; null when it did not.
    QString failureReason() const { return m_failureReason; }

    qint32 repairCoreAppPermissions(const QString &path);
    qint32 repairQMTool(const QString &path, const QString &signaturePath);
    qint32 repairQMToolPermissions(const QString &name);
    qint32 repairBundleUsingPackage(const QString &packagePath);
    /// Afterwards keeps the installation log of MacFUSE, when that was the package.
    qint32 repairFrameworkUsingPackage(const QString &packagePath);
    qint32 repairQMToolRootPermissions(const QString &name);
    /// Afterwards starts the Finder anew, which has loaded the old tool. \returns kCommandBegun when that fails.
    qint32 repairQMToolRoot(const QString &path, const QString &signaturePath);
    qint32 repairZIPArchive(const QString &archivePath, const QString &signaturePath, const QString &installPath);
    qint32 repairIntel10_5(const QString &path, const QString &signaturePath);
    qint32 installClientUpdate(const QString &packagePath, const QString &signaturePath, const QString &installPath);
    qint32 repairMonoKeypairPermissions();
    /// Runs the installed tool with administrator rights.
    qint32 repairPermissions();
    /// Runs a tool that is not installed yet with administrator rights, so that it installs itself.
    qint32 repairUpdateTool(const QString &toolPath, const QString &updateQMSignaturePath);

    /// Runs the overlay tool.
    qint32 insertFinderOverlayBundle();

    /// Looks whether a tool is there and may act as root. \returns kSucceeded, kToolMissing or
    /// kToolHasWrongPermissions, also as status().
    qint32 verifyUpdateTool(const QString &name);

    qint32 runUpdateTool(const QStringList &arguments, bool waitUntilExit);
    /// A run that is not waited for counts as failed.
    qint32 runExe(const QString &path, const QStringList &arguments, bool waitUntilExit);
    /// A run that is not waited for counts as succeeded. Raises an exception when the tool can't be started.
    qint32 runFinderOverlayTool(const QStringList &arguments, bool waitUntilExit);
    /// Success means only that the tool was started. Nothing is logged, and status() stays, when there can be no
    /// authorization at all.
    qint32 runUpdateToolAsAdmin(const std::vector<std::string> &arguments);
    qint32 runUninstalledUpdateToolAsAdmin(const QString &toolPath, const std::vector<std::string> &arguments);

private:
    QString installedTool(const QString &name) const;
    /// \returns the exit status of a run that is waited for. Raises an exception when the tool can't be started.
    std::optional<int> launch(const QString &path, const QStringList &arguments, bool waitUntilExit);
    qint32 begin(const std::function<qint32()> &run);
    qint32 runCommand(const QStringList &arguments);
    qint32 runAsAdmin(const QString &operation, const QString &toolPath, const std::vector<std::string> &arguments,
                      bool isPathLogged);
    void keepMacFuseLog();
    std::optional<Error> restartFinder();

    const Platform &m_platform;
    const QString m_toolPathFormat;
    const QString m_macFuseLog;
    qint32 m_status = kNothingDone;
    QString m_failureReason;
    QString updateToolPath; ///< deliberately neither set nor read: the path is always made of the format
};

} // namespace quillmark
