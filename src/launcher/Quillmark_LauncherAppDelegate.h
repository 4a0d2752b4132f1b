#pragma once

#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace quillmark {

class LocalizedStrings;
struct Platform;

/// Drives the start-up, strictly in order: settings, log, stale copies, the core application, the end.
///
/// Concurrency: the main thread only.
class Quillmark_LauncherAppDelegate {
public:
    Quillmark_LauncherAppDelegate(const Platform &platform, LocalizedStrings &strings);

    /// The start-up. It ends the process when the core was launched. Raises what the logger's set-up raises.
    void applicationDidFinishLaunching();

    /// The "Brand" of the configuration; 0 when absent.
    qint32 brandId() const;

    /// Starts the core application and ends the launcher. A launch that fails is not noticed.
    void launchCore();

    const QStringList &staleBundles() const { return m_staleBundles; }

private:
    void readConfiguration();
    void setUpLogging();

    const Platform &m_platform;
    const QString m_productName;
    QVariantMap config;
    QStringList m_staleBundles;
};

} // namespace quillmark
