#pragma once

#include "platform/Tasks.h"

namespace quillmark {

class LinuxTasks final : public Tasks {
public:
    /// Takes it back when whoever started this process had it ignore the end of children: none could be waited for.
    LinuxTasks();

    std::optional<int> run(const QString &path, const QStringList &arguments, const QString &programFolder) override;
    bool runUnwaited(const QString &path, const QStringList &arguments) override;
    bool start(const QString &path, const QStringList &arguments, const QString &programFolder) override;
    std::optional<PipedTask> launch(const QString &path, const QStringList &arguments,
                                    StandardError standardError) override;
    int terminationStatus(const PipedTask &task) override;
    void abandon(const PipedTask &task) override;
};

} // namespace quillmark
