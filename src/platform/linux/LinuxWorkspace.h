#pragma once

#include "platform/Workspace.h"

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

    QStringList applicationsFolders(Domain domain) const override;
    QStringList downloadsFolders() const override;
    QStringList volumesFolders() const override;
    /// Processes whose program is the main executable of a bundle, and the file manager, by process number.
    QList<QVariantMap> launchedApplications() const override;
    /// The first one in the user's Applications folder, then in the computer's.
    QString bundleWithIdentifier(const QString &bundleIdentifier) const override;
    bool launchApplication(const QString &path) override;
    bool openFolder(const QString &path) override;
    bool recycle(const QString &name, const QString &folder) override;

private:
    QString executableOf(const QString &path) const;

    const PropertyList &m_propertyList;
    SessionBus &m_sessionBus;
    Clock &m_clock;
};

} // namespace quillmark
