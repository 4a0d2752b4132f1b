#pragma once

#include "platform/process/Descriptor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quillmark {

/// A program that is to run.
struct Task {
    std::string launchPath;
    std::vector<std::string> arguments;
};

/// A child process whose standard output and standard error are pipes to this one.
struct PipedTask {
    std::int32_t processIdentifier = 0;
    Descriptor standardOutput; ///< the reading ends; reading never blocks
    Descriptor standardError;  ///< closed when the child has inherited this process's
    Descriptor termination;    ///< becomes readable when the child has ended
};

/// Child processes. They share this process's environment, and its standard streams unless it is said otherwise.
class Tasks {
public:
    /// What becomes of a launched program's standard error.
    enum class StandardError { Piped, Inherited };

    virtual ~Tasks() = default;

    /// Runs a program, given by its path, to its end. \param programFolder where it looks for programs by their names
    /// before anywhere else; may be absent. \returns its exit status, 128 and the signal's number when a signal ended
    /// it; nothing when it could not be started, or when its end could not be learned.
    virtual std::optional<int> run(const std::string &path, const std::vector<std::string> &arguments,
                                   const std::optional<std::string> &programFolder) = 0;

    /// Starts a program as run() does, and comes back at once. Nobody learns what becomes of it. \returns false when it
    /// could not be started.
    virtual bool runUnwaited(const std::string &path, const std::vector<std::string> &arguments) = 0;

    /// Starts a program, given by its path, and leaves it to itself, without this process's streams, session and
    /// current folder. \param programFolder as for run(). \returns false when it could not be started.
    virtual bool start(const std::string &path, const std::vector<std::string> &arguments,
                       const std::optional<std::string> &programFolder) = 0;

    /// Starts a program, given by its path, with pipes. \returns nothing when it could not be started.
    virtual std::optional<PipedTask> launch(const std::string &path, const std::vector<std::string> &arguments,
                                            StandardError standardError) = 0;
    /// Waits for a launched program's end. To be called once. \returns its exit status, or the number of the signal
    /// that ended it; -1 when that could not be learned.
    virtual int terminationStatus(const PipedTask &task) = 0;
    /// In the place of that, for a launched program that nobody waits for any more.
    virtual void abandon(const PipedTask &task) = 0;
};

} // namespace quillmark
