#pragma once

#include "platform/Tasks.h"

#include <cstdint>
#include <functional>
#include <string>

namespace quillmark {

/// Runs one program to its end and collects what it prints.
///
/// Concurrency: any thread. On the main one, what else is to be done there is done meanwhile.
class TaskOutputReader {
public:
    /// \param task is not launched yet.
    explicit TaskOutputReader(Task task) : m_task(std::move(task)) {}

    /// Launches the program and returns when it has ended and both pipes are closed, by it and by everyone it gave them
    /// to. \param onCreated is told the process identifier before any output is awaited; may be empty. Raises an
    /// exception when the program could not be launched. What the callback raises ends the wait, not the program.
    void launchTaskAndRunSynchronous(const std::function<void(std::int32_t)> &onCreated);

    std::string &standardOutputData() { return standardOutput; }
    std::string &standardErrorData() { return standardError; }
    /// The program's exit status, or the number of the signal that ended it; 0 before it has ended.
    int terminationStatus() const { return m_terminationStatus; }

private:
    void runUntilComplete(const PipedTask &task);
    // What is done when a descriptor has something. \returns false when there will be no more.
    bool standardOutNotification(int pipe);
    bool standardErrorNotification(int pipe);
    bool terminatedNotification();

    const Task m_task;
    std::string standardOutput;
    std::string standardError;
    bool taskComplete = false;
    bool outputClosed = false;
    bool errorClosed = false;
    int m_terminationStatus = 0;
};

} // namespace quillmark
