#pragma once

#include "installcheck/InstallCheckManager.h"

#include <cstdint>
#include <functional>
#include <string>

namespace quillmark {

class LocalizedStrings;

/// Drives the start-up, strictly in order: settings, log, single instance, the move into the Applications folder,
/// components, the core application, the end.
///
/// Concurrency: the main thread only.
class Quillmark_LauncherAppDelegate final : public ApplicationDelegate {
public:
    /// \param installCheck gives the install check when its turn has come: it reads the catalogue and may log.
    Quillmark_LauncherAppDelegate(LocalizedStrings &strings, std::function<InstallCheckManager &()> installCheck);

    /// The start-up. It ends the process when the core was launched or the application has moved, and comes back when
    /// components are at fault. Raises what the logger's set-up raises. \returns true when the check window is up, and
    /// drives the rest.
    bool applicationDidFinishLaunching();

    /// The "Brand" of the configuration; 0 when absent.
    std::int32_t brandId() const override;

    /// Returns only when no core application runs; else tells the user so, and ends the process.
    void ensureCoreNotRunning();

    /// Starts the core application and ends the launcher. A launch that fails is not noticed.
    void launchCore() override;

private:
    void readConfiguration();
    void setUpLogging();
    /// Asks the process table, and meanwhile has the check window loaded when it will be wanted.
    bool isCoreRunning();
    void logFaults(const InstallCheckManager &installCheck) const;

    /// The core application's name: the product's with "Core" behind it.
    std::string coreName() const;

    LocalizedStrings &m_strings;
    const std::function<InstallCheckManager &()> m_installCheck;
    const std::string m_productName;
    Dictionary config;
};

} // namespace quillmark
