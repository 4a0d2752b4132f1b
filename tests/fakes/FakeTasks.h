#pragma once

#include "fakes/Transcript.h"
#include "platform/Tasks.h"

#include <QMap>

namespace quillmark::test {

/// Programs that end with the status that was set for their last argument, else with 1.
class FakeTasks final : public Tasks {
public:
    explicit FakeTasks(Transcript &transcript) : m_transcript(transcript) {}

    QMap<QString, int> statuses;
    bool canStart = true;

    std::optional<int> run(const QString &path, const QStringList &arguments) override {
        m_transcript.record(QStringLiteral("run ") + path + u' ' + arguments.join(u' '));
        return canStart ? std::optional(statuses.value(arguments.value(arguments.size() - 1), 1)) : std::nullopt;
    }

    /// A task that has ended at once, without output.
    std::optional<PipedTask> launch(const QString &path, const QStringList &arguments) override {
        m_transcript.record(QStringLiteral("launch ") + path + u' ' + arguments.join(u' '));
        return canStart ? std::optional(PipedTask{processIdentifier, {}, {}, {}}) : std::nullopt;
    }
    int terminationStatus(const PipedTask & /*task*/) override { return 0; }

    qint32 processIdentifier = 7;

private:
    Transcript &m_transcript;
};

} // namespace quillmark::test
