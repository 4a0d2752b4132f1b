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

    QStringList applicationsFolders(Domain domain) const override {
        const bool isUser = domain == Domain::User;
        m_transcript.record(isUser ? QStringLiteral("applicationsFolders user")
                                   : QStringLiteral("applicationsFolders local"));
        return isUser ? userFolders : localFolders;
    }
    bool launchApplication(const QString &path) override {
        return !m_transcript.recordOrFail(QStringLiteral("launchApplication ") + path,
                                          QStringLiteral("launchApplication"));
    }

private:
    Transcript &m_transcript;
};

} // namespace quillmark::test
