#pragma once

#include "fakes/Transcript.h"
#include "platform/Workspace.h"

#include <QMap>

namespace quillmark::test {

class FakeWorkspace final : public Workspace {
public:
    explicit FakeWorkspace(Transcript &transcript) : m_transcript(transcript) {}

    QStringList userFolders;
    QStringList localFolders;
    QList<QVariantMap> applications;
    QMap<QString, QString> bundles; ///< paths by identifier

    QStringList applicationsFolders(Domain domain) const override {
        const bool isUser = domain == Domain::User;
        m_transcript.record(isUser ? QStringLiteral("applicationsFolders user")
                                   : QStringLiteral("applicationsFolders local"));
        return isUser ? userFolders : localFolders;
    }
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

private:
    Transcript &m_transcript;
};

} // namespace quillmark::test
