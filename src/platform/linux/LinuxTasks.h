#pragma once

#include "platform/Tasks.h"

namespace quillmark {

class LinuxTasks final : public Tasks {
public:
    std::optional<int> run(const QString &path, const QStringList &arguments) override;
    std::optional<PipedTask> launch(const QString &path, const QStringList &arguments) override;
    int terminationStatus(const PipedTask &task) override;
};

} // namespace quillmark
