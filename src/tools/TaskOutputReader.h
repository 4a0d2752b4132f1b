#pragma once

#include "platform/Tasks.h"

#include <QByteArray>
#include <functional>

namespace quillmark {

/// Runs one program to its end and collects what it prints.
///
/// Concurrency: needs a thread with an event loop, which it turns meanwhile; other events of that loop are served.
class TaskOutputReader {
public:
    TaskOutputReader(Tasks &tasks, QString path, QStringList arguments);

    /// Launches the program and returns when it has ended and both pipes are closed, by it and by everyone it gave them
    /// to. \param onCreated is told the process identifier before any output is awaited; may be empty. Raises an
    /// exception when the program could not be launched.
    void launchTaskAndRunSynchronous(const std::function<void(qint32)> &onCreated);

    const QByteArray &standardOutputData() const { return standardOutput; }
    const QByteArray &standardErrorData() const { return standardError; }
    /// The program's exit status, or the number of the signal that ended it; 0 before it has ended.
    int terminationStatus() const { return m_terminationStatus; }

private:
    void runUntilComplete(const PipedTask &task);

    Tasks &m_tasks;
    const QString m_path;
    const QStringList m_arguments;
    QByteArray standardOutput;
    QByteArray standardError;
    bool taskComplete = false;
    bool outputClosed = false;
    bool errorClosed = false;
    int m_terminationStatus = 0;
};

} // namespace quillmark
