#pragma once

#include "fakes/Transcript.h"
#include "platform/Workspace.h"
#include "platform/files/Path.h"
#include "utils/FileManager.h"

#include <functional>
#include <map>
#include <utility>

namespace quillmark::test {

class FakeWorkspace final : public Workspace, public Recorder {
public:
    using Recorder::Recorder;

    std::vector<std::string> userFolders;
    std::vector<std::string> localFolders;
    std::vector<std::string> downloads;
    std::vector<std::string> volumes = {"/Volumes/", "/media/"};
    std::vector<Dictionary> applications;
    std::map<std::string, std::string> bundles;          ///< paths by identifier
    mutable std::function<void()> onApplicationsFolders; ///< called when they are first asked for
    std::string ownFolder; ///< the test's own: what is recycled in it is really removed, and nothing else ever is

    std::vector<std::string> applicationsFolders(Domain domain) const override {
        if (onApplicationsFolders) {
            std::exchange(onApplicationsFolders, {})();
        }
        switch (domain) {
        case Domain::User:
            record("applicationsFolders user");
            return userFolders;
        case Domain::Local:
            record("applicationsFolders local");
            return localFolders;
        case Domain::All:
            break;
        }
        record("applicationsFolders all");
        std::vector<std::string> all = userFolders;
        all.insert(all.end(), localFolders.begin(), localFolders.end());
        return all;
    }
    std::vector<std::string> downloadsFolders() const override {
        record("downloadsFolders");
        return downloads;
    }
    std::vector<std::string> volumesFolders() const override { return volumes; }
    std::vector<Dictionary> launchedApplications() const override {
        record("launchedApplications");
        return applications;
    }
    std::optional<std::string> bundleWithIdentifier(const std::string &bundleIdentifier) const override {
        const auto bundle = bundles.find(bundleIdentifier);
        return bundle != bundles.end() ? std::optional(bundle->second) : std::nullopt;
    }
    /// Lets an application run.
    void addApplication(const std::string &bundleIdentifier, int process) {
        applications.push_back(
            {{kApplicationBundleIdentifier, bundleIdentifier}, {kApplicationProcessIdentifier, process}});
    }
    bool launchApplication(const std::string &path) override {
        return !recordOrFail("launchApplication " + path, "launchApplication");
    }

    bool openFolder(const std::string &path) override {
        record("openFolder " + path);
        return true;
    }
    bool recycle(const std::string &name, const std::string &folder) override {
        if (recordOrFail("recycle " + name + " in " + folder, "recycle")) {
            return false;
        }
        const std::string path = normalPath(folder + '/' + name);
        if (!ownFolder.empty() && path.starts_with(ownFolder + '/')) {
            __QMCurrentThreadFileManager().removeItem(path);
        }
        return true;
    }
};

} // namespace quillmark::test
