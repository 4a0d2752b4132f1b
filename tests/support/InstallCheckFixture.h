#pragma once

#include "accounts/KeyList.h"
#include "branding/BrandingManager.h"
#include "installcheck/InstallCheckManager.h"
#include "support/LogFixture.h"
#include "support/ValuePrinter.h"
#include "tools/UpdateToolManager.h"

#include <initializer_list>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace quillmark::test {

/// An install check over a catalogue of the test's own, with components in its home folder. The application's version
/// is 1.14.something.
class InstallCheckFixture : public LogFixture {
protected:
    using Keys = std::initializer_list<std::pair<Key, Value>>;

    InstallCheckFixture() {
        platform.bundle.bundlePath = home.path("Quillmark.app");
        home.makeFolder("Quillmark.app/Contents/Resources");
        _setStandardStreams(nullptr, nullptr);
    }

    /// An item with those keys of the key list.
    static RequiredItem itemOf(Keys keys) {
        RequiredItem item;
        for (const auto &[key, value] : keys) {
            item.insert_or_assign(key, value);
        }
        return item;
    }
    static RequiredItem itemOf(const char *type, const char *name, const std::string &installPath, Keys more = {}) {
        RequiredItem item = itemOf(more);
        item.insert_or_assign(kInstallType, type);
        item.insert_or_assign(kName, name);
        item.insert_or_assign(kInstallPath, installPath);
        return item;
    }

    /// Writes a property list with that root.
    std::string writeList(const std::string &relative, const Value &root) {
        const std::string document = "document " + std::to_string(platform.propertyList.documents.size());
        platform.propertyList.documents[document] = root;
        return home.write(relative, document);
    }
    void setCatalogue(const Value &root) {
        platform.bundle.resources.emplace_back("RequiredItems.plist");
        writeList("Quillmark.app/Contents/Resources/RequiredItems.plist", root);
        m_manager.reset();
    }
    void setItems(const List &items) { setCatalogue(Dictionary{{"RequiredItems", items}}); }

    /// A bundle of that version; with an absent version, one whose property list tells none.
    std::string installBundle(const std::string &relative, const Value &shortVersion) {
        writeList(relative + "/Contents/Info.plist", shortVersion.isNothing()
                                                         ? Dictionary{{"CFBundleVersion", 7}}
                                                         : Dictionary{{"CFBundleShortVersionString", shortVersion}});
        return home.path(relative);
    }
    /// A file of that mode that prints such an output when it is run. It is not the administrator's.
    std::string installTool(const std::string &relative, const std::string &output, mode_t mode = 0755) {
        const std::string path = home.write(relative, "tool");
        setMode(path, mode);
        if (::geteuid() == 0) {
            constexpr uid_t kNobody = 65534;
            EXPECT_EQ(::chown(path.c_str(), kNobody, static_cast<gid_t>(-1)), 0);
            setMode(path, mode);
        }
        platform.tasks.outputs[path] = output;
        return path;
    }
    static void setMode(const std::string &path, mode_t mode) { EXPECT_EQ(::chmod(path.c_str(), mode), 0); }

    /// The install check over the last catalogue.
    InstallCheckManager &manager() {
        if (!m_manager) {
            m_strings.emplace(platform.bundle);
            m_branding.emplace(platform.bundle, platform.images, *m_strings, [] { return -1; });
            m_manager.emplace(*m_strings, *m_branding, updateTool);
        }
        return *m_manager;
    }
    /// Evaluates one item. \returns its status.
    std::string statusOf(const RequiredItem &item) { return statusesOf({item}).at(0); }
    std::vector<std::string> statusesOf(const List &items) {
        setItems(items);
        manager().updateStatus();
        return manager().requiredItemsStatusKeys();
    }

    void startLog(LoggingLevel level = kLogLevelDetailed) { m_log = logToFile(level); }
    /// The lines since then, each with its level; the home folder's path is "~".
    Lines log() const { return withTilde(linesOf(m_log)); }

    /// A file of the system that is the administrator's, with mode 0755, and one with mode 04755.
    static constexpr const char *kAdministratorsTool = "/usr/bin/env";
    static constexpr const char *kSetUserIdTool = "/usr/bin/passwd";

    UpdateToolManager updateTool{"/usr/bin/%@"};

private:
    std::optional<LocalizedStrings> m_strings;
    std::optional<BrandingManager> m_branding;
    std::optional<InstallCheckManager> m_manager;
    std::string m_log;
};

} // namespace quillmark::test
