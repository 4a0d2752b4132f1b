#pragma once

#include "fakes/Transcript.h"
#include "platform/Tasks.h"

#include <QMap>
#include <QStringList>
#include <cstdlib>
#include <functional>
#include <sys/mman.h>
#include <unistd.h>

namespace quillmark::test {

/// Programs that end with the status that was set for their last argument, else with the usual one. One that is to fail
/// at its n-th "run" ends with 4.
class FakeTasks final : public Tasks {
public:
    explicit FakeTasks(Transcript &transcript) : m_transcript(transcript) {}

    QMap<QString, int> statuses;
    int usualStatus = 1;
    QMap<QString, QByteArray> outputs; ///< by path
    QStringList unstartable;           ///< paths
    std::function<void()> onLaunch;    ///< called before each launch
    QStringList programFolders;        ///< of the runs
    bool canStart = true;

    std::optional<int> run(const QString &path, const QStringList &arguments, const QString &programFolder) override {
        if (!programFolder.isNull()) {
            programFolders << programFolder;
        }
        constexpr int kFailure = 4;
        if (m_transcript.recordOrFail(QStringLiteral("run ") + path + u' ' + arguments.join(u' '),
                                      QStringLiteral("run"))) {
            return kFailure;
        }
        return canStart ? std::optional(statuses.value(arguments.value(arguments.size() - 1), usualStatus))
                        : std::nullopt;
    }

    bool start(const QString &path, const QStringList &arguments, const QString &programFolder) override {
        m_transcript.record(QStringLiteral("start ") + path + u' ' + arguments.join(u' '));
        if (!programFolder.isNull()) {
            m_transcript.record(QStringLiteral("  with programs of ") + programFolder);
        }
        return canStart;
    }

    bool runUnwaited(const QString &path, const QStringList &arguments) override {
        m_transcript.record(QStringLiteral("start ") + path + u' ' + arguments.join(u' '));
        return canStart;
    }

    /// A task that has ended at once, with the output that was set for its path.
    std::optional<PipedTask> launch(const QString &path, const QStringList &arguments,
                                    StandardError /*standardError*/) override {
        m_transcript.record(QStringLiteral("launch ") + path + u' ' + arguments.join(u' '));
        if (onLaunch) {
            onLaunch();
        }
        if (!canStart || unstartable.contains(path)) {
            return std::nullopt;
        }
        Descriptor output(::memfd_create("output", MFD_CLOEXEC));
        const QByteArray bytes = outputs.value(path);
        if (::write(output.get(), bytes.constData(), static_cast<size_t>(bytes.size())) != bytes.size()) {
            std::abort();
        }
        ::lseek(output.get(), 0, SEEK_SET);
        return PipedTask{processIdentifier, std::move(output), {}, {}};
    }
    int terminationStatus(const PipedTask & /*task*/) override { return 0; }
    void abandon(const PipedTask & /*task*/) override { m_transcript.record(QStringLiteral("abandon")); }

    qint32 processIdentifier = 7;

private:
    Transcript &m_transcript;
};

} // namespace quillmark::test
