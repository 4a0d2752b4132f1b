#pragma once

#include "platform/Tasks.h"

#include <optional>
#include <string>
#include <vector>

namespace quillmark {

class LinuxTasks final : public Tasks {
public:
    /// Takes it back when whoever started this process had it ignore the end of children: none could be waited for.
    LinuxTasks();

    std::optional<int> run(const std::string &path, const std::vector<std::string> &arguments,
                           const std::optional<std::string> &programFolder) override;
    bool runUnwaited(const std::string &path, const std::vector<std::string> &arguments) override;
    bool start(const std::string &path, const std::vector<std::string> &arguments,
               const std::optional<std::string> &programFolder) override;
    std::optional<PipedTask> launch(const std::string &path, const std::vector<std::string> &arguments,
                                    StandardError standardError) override;
    int terminationStatus(const PipedTask &task) override;
    void abandon(const PipedTask &task) override;
};

} // namespace quillmark
