#pragma once

#include "fakes/Transcript.h"
#include "platform/Workspace.h"
#include "utils/FileManager.h"

#include <QDir>
#include <QMap>
#include <functional>
#include <utility>

namespace quillmark::test {

class FakeWorkspace final : public Workspace {
public:
    explicit FakeWorkspace(Transcript &transcript) : m_transcript(transcript) {}

    QStringList userFolders;
    QStringList localFolders;
    QStringList downloads;
    QList<QVariantMap> applications;
    QMap<QString, QString> bundles;                      ///< paths by identifier
    mutable std::function<void()> onApplicationsFolders; ///< called when they are first asked for
    QString ownFolder; ///< the test's own: what is recycled in it is really removed, and nothing else ever is

    QStringList applicationsFolders(Domain domain) const override {
        if (onApplicationsFolders) {
            std::exchange(onApplicationsFolders, {})();
        }
        switch (domain) {
        case Domain::User:
            m_transcript.record(QStringLiteral("applicationsFolders user"));
            return userFolders;
        case Domain::Local:
            m_transcript.record(QStringLiteral("applicationsFolders local"));
            return localFolders;
        case Domain::All:
            break;
        }
        m_transcript.record(QStringLiteral("applicationsFolders all"));
        return userFolders + localFolders;
    }
    QStringList downloadsFolders() const override {
        m_transcript.record(QStringLiteral("downloadsFolders"));
        return downloads;
    }
    QStringList volumesFolders() const override { return {QStringLiteral("/Volumes/"), QStringLiteral("/media/")}; }
    QList<QVariantMap> launchedApplications() const override {
        m_transcript.record(QStringLiteral("launchedApplications"));
        return applications;
    }
    QString bundleWithIdentifier(const QString &bundleIdentifier) const override {
        return bundles.value(bundleIdentifier);
    }
    /// Lets an application run.
    void addApplication(const QString &bundleIdentifier, int process) {
        applications.append(
            {{kApplicationBundleIdentifier, bundleIdentifier}, {kApplicationProcessIdentifier, process}});
    }
    bool launchApplication(const QString &path) override {
        return !m_transcript.recordOrFail(QStringLiteral("launchApplication ") + path,
                                          QStringLiteral("launchApplication"));
    }

    bool openFolder(const QString &path) override {
        m_transcript.record(QStringLiteral("openFolder ") + path);
        return true;
    }
    bool recycle(const QString &name, const QString &folder) override {
        if (m_transcript.recordOrFail(QStringLiteral("recycle %1 in %2").arg(name, folder),
                                      QStringLiteral("recycle"))) {
            return false;
        }
        const QString path = QDir::cleanPath(folder + u'/' + name);
        if (!ownFolder.isEmpty() && path.startsWith(ownFolder + u'/')) {
            __QMCurrentThreadFileManager().removeItem(path);
        }
        return true;
    }

private:
    Transcript &m_transcript;
};

} // namespace quillmark::test
