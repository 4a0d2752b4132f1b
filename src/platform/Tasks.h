#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace quillmark {

/// Child processes that share this process's standard streams and environment.
class Tasks {
public:
    virtual ~Tasks() = default;

    /// Runs a program, given by its path, to its end. \returns its exit status, 128 and the signal's number when a
    /// signal ended it; nothing when it could not be started.
    virtual std::optional<int> run(const QString &path, const QStringList &arguments) = 0;
};

} // namespace quillmark
