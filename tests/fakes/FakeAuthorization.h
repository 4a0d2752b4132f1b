#pragma once

#include "fakes/Transcript.h"
#include "platform/Authorization.h"

#include <algorithm>

namespace quillmark::test {

/// Grants or refuses what it was told to, runs nothing, and lets a program print what was set.
class FakeAuthorization final : public Authorization {
public:
    explicit FakeAuthorization(Transcript &transcript) : m_transcript(transcript) {}

    qint32 createStatus = 0;
    qint32 rightsStatus = 0;
    qint32 executeStatus = 0;
    QList<std::optional<int>> childStatuses; ///< of the waits to come; 0 when there is none left
    QByteArray output;                       ///< what is left to be read from the program's pipe
    QList<qint64> reads;                     ///< how much each read asked for

    qint32 create(std::unique_ptr<Reference> &reference) override {
        m_transcript.record(QStringLiteral("AuthorizationCreate"));
        if (createStatus == 0) {
            reference = std::make_unique<FakeReference>(*this);
        }
        return createStatus;
    }

private:
    class Pipe final : public CommunicationsPipe {
    public:
        explicit Pipe(FakeAuthorization &owner) : m_owner(owner) {}
        qint64 read(char *buffer, qint64 size) override {
            const QByteArray piece = m_owner.output.left(size);
            std::copy(piece.begin(), piece.end(), buffer);
            m_owner.output.remove(0, piece.size());
            m_owner.reads << size;
            return piece.size();
        }

    private:
        FakeAuthorization &m_owner;
    };

    class FakeReference final : public Reference {
    public:
        explicit FakeReference(FakeAuthorization &owner) : m_owner(owner) {}
        FakeReference(const FakeReference &) = delete;
        FakeReference &operator=(const FakeReference &) = delete;
        ~FakeReference() override { m_owner.m_transcript.record(QStringLiteral("AuthorizationFree")); }

        qint32 copyRights(const QByteArray &right, quint32 flags) override {
            m_owner.m_transcript.record(
                QStringLiteral("AuthorizationCopyRights %1 %2").arg(QString::fromLatin1(right)).arg(flags, 0, 16));
            return m_owner.rightsStatus;
        }
        qint32 executeWithPrivileges(const QByteArray &path, const QList<QByteArray> &arguments,
                                     std::unique_ptr<CommunicationsPipe> *pipe) override {
            if (m_owner.m_transcript.recordOrFail(QStringLiteral("AuthorizationExecuteWithPrivileges ") +
                                                      QString::fromUtf8(path + ' ' + arguments.join(' ')),
                                                  QStringLiteral("AuthorizationExecuteWithPrivileges"))) {
                return kAuthorizationToolExecuteFailure;
            }
            if (pipe != nullptr) {
                *pipe = std::make_unique<Pipe>(m_owner);
            }
            return m_owner.executeStatus;
        }
        std::optional<int> waitForChild() override {
            m_owner.m_transcript.record(QStringLiteral("wait"));
            return m_owner.childStatuses.isEmpty() ? 0 : m_owner.childStatuses.takeFirst();
        }

    private:
        FakeAuthorization &m_owner;
    };

    Transcript &m_transcript;
};

} // namespace quillmark::test
