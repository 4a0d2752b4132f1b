#pragma once

#include "platform/Tasks.h"

#include <QByteArray>
#include <functional>
#include <vector>

namespace quillmark {

/// Runs one program to its end and collects what it prints.
///
/// Concurrency: any thread. Where that has an event loop, it is turned meanwhile: its other events are served.
class TaskOutputReader {
public:
    /// \param task is not launched yet.
    TaskOutputReader(Tasks &tasks, Task task);

    /// Launches the program and returns when it has ended and both pipes are closed, by it and by everyone it gave them
    /// to. \param onCreated is told the process identifier before any output is awaited; may be empty. Raises an
    /// exception when the program could not be launched. What the callback raises ends the wait, not the program.
    void launchTaskAndRunSynchronous(const std::function<void(qint32)> &onCreated);

    const QByteArray &standardOutputData() const { return standardOutput; }
    const QByteArray &standardErrorData() const { return standardError; }
    /// The program's exit status, or the number of the signal that ended it; 0 before it has ended.
    int terminationStatus() const { return m_terminationStatus; }

private:
    /// A descriptor that is waited for, and what is done when it has something.
    struct Source {
        int descriptor;
        /// \returns false when there will be no more.
        bool (TaskOutputReader::*notification)(int descriptor);
    };

    void runUntilComplete(const PipedTask &task);
    static void turnEventLoop(const std::vector<Source> &sources, TaskOutputReader &reader);
    static void turnPoll(std::vector<Source> sources, TaskOutputReader &reader);
    bool standardOutNotification(int pipe);
    bool standardErrorNotification(int pipe);
    bool terminatedNotification(int termination);

    Tasks &m_tasks;
    const Task m_task;
    QByteArray standardOutput;
    QByteArray standardError;
    bool taskComplete = false;
    bool outputClosed = false;
    bool errorClosed = false;
    int m_terminationStatus = 0;
};

} // namespace quillmark
