#pragma once

#include "platform/Workspace.h"

namespace quillmark {

class PropertyList;

class LinuxWorkspace final : public Workspace {
public:
    explicit LinuxWorkspace(const PropertyList &propertyList) : m_propertyList(propertyList) {}

    QStringList applicationsFolders(Domain domain) const override;
    /// Processes whose program is the main executable of a bundle, by process number.
    QList<QVariantMap> launchedApplications() const override;
    /// The first one in the user's Applications folder, then in the computer's.
    QString bundleWithIdentifier(const QString &bundleIdentifier) const override;
    bool launchApplication(const QString &path) override;

private:
    QString executableOf(const QString &path) const;

    const PropertyList &m_propertyList;
};

} // namespace quillmark
