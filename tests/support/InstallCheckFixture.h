#pragma once

#include "accounts/KeyList.h"
#include "branding/BrandingManager.h"
#include "installcheck/InstallCheckManager.h"
#include "support/LogFixture.h"
#include "tools/UpdateToolManager.h"

#include <initializer_list>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark::test {

inline QStringList listOf(std::initializer_list<const char *> texts) {
    QStringList list;
    for (const char *text : texts) {
        list << QString::fromUtf8(text);
    }
    return list;
}

/// An install check over a catalogue of the test's own, with components in its home folder. The application's version
/// is 1.14.something.
class InstallCheckFixture : public LogFixture {
protected:
    using Keys = std::initializer_list<std::pair<Key, QVariant>>;

    InstallCheckFixture() {
        platform.bundle.bundlePath = home.path(QStringLiteral("Quillmark.app"));
        home.makeFolder(QStringLiteral("Quillmark.app/Contents/Resources"));
        _setStandardStreams(nullptr, nullptr);
    }

    /// An item with those keys of the key list.
    static RequiredItem itemOf(Keys keys) {
        RequiredItem item;
        for (const auto &[key, value] : keys) {
            item.insert(key, value);
        }
        return item;
    }
    static RequiredItem itemOf(const char *type, const char *name, const QString &installPath, Keys more = {}) {
        RequiredItem item = itemOf(more);
        item.insert(itemOf(
            {{kInstallType, QString::fromUtf8(type)}, {kName, QString::fromUtf8(name)}, {kInstallPath, installPath}}));
        return item;
    }

    /// Writes a property list with that root.
    QString writeList(const QString &relative, const QVariant &root) {
        const QByteArray document = "document " + QByteArray::number(platform.propertyList.documents.size());
        platform.propertyList.documents.insert(document, root);
        return home.write(relative, document);
    }
    void setCatalogue(const QVariant &root) {
        platform.bundle.resources << QStringLiteral("RequiredItems.plist");
        writeList(QStringLiteral("Quillmark.app/Contents/Resources/RequiredItems.plist"), root);
        m_manager.reset();
    }
    void setItems(const QVariantList &items) { setCatalogue(QVariantMap{{QStringLiteral("RequiredItems"), items}}); }

    /// A bundle of that version; with an absent version, one whose property list tells none.
    QString installBundle(const QString &relative, const QVariant &shortVersion) {
        writeList(relative + QStringLiteral("/Contents/Info.plist"),
                  shortVersion.isValid() ? QVariantMap{{QStringLiteral("CFBundleShortVersionString"), shortVersion}}
                                         : QVariantMap{{QStringLiteral("CFBundleVersion"), 7}});
        return home.path(relative);
    }
    /// A file of that mode that prints such an output when it is run. It is not the administrator's.
    QString installTool(const QString &relative, const QByteArray &output, mode_t mode = 0755) {
        const QString path = home.write(relative, "tool");
        setMode(path, mode);
        if (::geteuid() == 0) {
            constexpr uid_t kNobody = 65534;
            EXPECT_EQ(::chown(QFile::encodeName(path).constData(), kNobody, static_cast<gid_t>(-1)), 0);
            setMode(path, mode);
        }
        platform.tasks.outputs.insert(path, output);
        return path;
    }
    static void setMode(const QString &path, mode_t mode) {
        EXPECT_EQ(::chmod(QFile::encodeName(path).constData(), mode), 0);
    }

    /// The install check over the last catalogue.
    InstallCheckManager &manager() {
        if (!m_manager) {
            m_strings.emplace(platform.bundle);
            m_branding.emplace(platform.bundle, platform.images, *m_strings, [] { return -1; });
            m_manager.emplace(platform.platform, *m_strings, *m_branding, updateTool);
        }
        return *m_manager;
    }
    /// Evaluates one item. \returns its status.
    QString statusOf(const RequiredItem &item) {
        setItems({item});
        manager().updateStatus();
        return manager().requiredItemsStatusKeys().value(0);
    }
    QStringList statusesOf(const QVariantList &items) {
        setItems(items);
        manager().updateStatus();
        return manager().requiredItemsStatusKeys();
    }

    void startLog(LoggingLevel level = kLogLevelDetailed) { m_log = logToFile(level); }
    /// The lines since then, each with its level; the home folder's path is "~".
    QStringList log() const {
        QStringList lines = linesOf(m_log);
        return lines.replaceInStrings(home.path(), QStringLiteral("~"));
    }

    /// A file of the system that is the administrator's, with mode 0755, and one with mode 04755.
    static inline const QString kAdministratorsTool = QStringLiteral("/usr/bin/env");
    static inline const QString kSetUserIdTool = QStringLiteral("/usr/bin/passwd");

    UpdateToolManager updateTool{platform.platform, QStringLiteral("/usr/bin/%@")};

private:
    std::optional<LocalizedStrings> m_strings;
    std::optional<BrandingManager> m_branding;
    std::optional<InstallCheckManager> m_manager;
    QString m_log;
};

} // namespace quillmark::test
