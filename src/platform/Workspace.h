#pragma once

#include "platform/values/Key.h"
#include "platform/values/Value.h"

#include <optional>
#include <string>
#include <vector>

namespace quillmark {

/// Keys of a launched-application record: the bundle's identifier and path, and the process's number.
inline constexpr Key kApplicationBundleIdentifier{"NSApplicationBundleIdentifier"};
inline constexpr Key kApplicationPath{"NSApplicationPath"};
inline constexpr Key kApplicationProcessIdentifier{"NSApplicationProcessIdentifier"};

/// The file manager's bundle identifier.
inline constexpr const char *kFinderIdentifier = "com.apple.finder";

/// The desktop: its standard folders and the applications on it.
class Workspace {
public:
    enum class Domain { User, Local, All };

    virtual ~Workspace() = default;

    /// The Applications folders of a domain, tilde expanded, in the platform's order; of all domains the user's first.
    virtual std::vector<std::string> applicationsFolders(Domain domain) const = 0;

    /// The Downloads folders of all domains.
    virtual std::vector<std::string> downloadsFolders() const = 0;

    /// The folders that volumes are mounted in, each with a slash at its end.
    virtual std::vector<std::string> volumesFolders() const = 0;

    /// The applications that run, in the order of their start: records with the keys above. Of other users'
    /// applications only those are told that may be looked at.
    virtual std::vector<Dictionary> launchedApplications() const = 0;

    /// The path of the application bundle with an identifier; absent when there is none.
    virtual std::optional<std::string> bundleWithIdentifier(const std::string &bundleIdentifier) const = 0;

    /// Starts an application, given its bundle or the executable inside it, in a session of its own. It inherits
    /// neither descriptors nor signal settings and outlives this process. One that was launched so before and still
    /// runs is not started again. \returns false when it could not be started.
    virtual bool launchApplication(const std::string &path) = 0;

    /// Shows a folder in the file manager. \returns false when that can't be.
    virtual bool openFolder(const std::string &path) = 0;

    /// Moves the item of that name in that folder, be it a link, to the Trash. \returns false when it stays where it
    /// is.
    virtual bool recycle(const std::string &name, const std::string &folder) = 0;
};

} // namespace quillmark
