#pragma once

#include "platform/Tasks.h"

namespace quillmark {

class LinuxTasks final : public Tasks {
public:
    std::optional<int> run(const QString &path, const QStringList &arguments) override;
};

} // namespace quillmark
