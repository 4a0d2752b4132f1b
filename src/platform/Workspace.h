#pragma once

#include <QString>
#include <QStringList>

namespace quillmark {

/// The desktop: its standard folders and the applications on it.
class Workspace {
public:
    enum class Domain { User, Local };

    virtual ~Workspace() = default;

    /// The Applications folders of a domain, tilde expanded, in the platform's order.
    virtual QStringList applicationsFolders(Domain domain) const = 0;

    /// Starts an application, given its bundle or the executable inside it, in a session of its own. It inherits
    /// neither descriptors nor signal settings and outlives this process.
    /// \returns false when it could not be started.
    virtual bool launchApplication(const QString &path) = 0;
};

} // namespace quillmark
