#pragma once

#include "platform/Workspace.h"

#include <optional>
#include <string>
#include <vector>

namespace quillmark {

class Clock;
class PropertyList;
class SessionBus;

/// The desktop's file manager takes the Finder's place, under the Finder's identifier. It runs as soon as a desktop
/// wants it, so it can always be launched.
class LinuxWorkspace final : public Workspace {
public:
    LinuxWorkspace(const PropertyList &propertyList, SessionBus &sessionBus, Clock &clock)
        : m_propertyList(propertyList), m_sessionBus(sessionBus), m_clock(clock) {}

    std::vector<std::string> applicationsFolders(Domain domain) const override;
    std::vector<std::string> downloadsFolders() const override;
    std::vector<std::string> volumesFolders() const override;
    /// Processes whose program is the main executable of a bundle, and the file manager, by process number.
    std::vector<Dictionary> launchedApplications() const override;
    /// The first one in the user's Applications folder, then in the computer's.
    std::optional<std::string> bundleWithIdentifier(const std::string &bundleIdentifier) const override;
    bool launchApplication(const std::string &path) override;
    bool openFolder(const std::string &path) override;
    bool recycle(const std::string &name, const std::string &folder) override;

private:
    std::string executableOf(const std::string &path) const;

    const PropertyList &m_propertyList;
    SessionBus &m_sessionBus;
    Clock &m_clock;
};

} // namespace quillmark
