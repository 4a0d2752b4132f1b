#include "tools/TaskOutputReader.h"

#include "tools/LaunchException.h"
#include "utils/Assert.h"
#include "utils/Log.h"

#include <QEventLoop>
#include <QSocketNotifier>
#include <cerrno>
#include <unistd.h>

namespace quillmark {

namespace {

/// Appends what the pipe holds. \returns false at its end.
bool readAvailable(int pipe, QByteArray &data) {
    constexpr qsizetype kPiece = qsizetype{64} * 1024;
    constexpr int kPiecesATurn = 16; // then other events have their turn
    for (int piece = 0; piece < kPiecesATurn; ++piece) {
        const qsizetype before = data.size();
        if (data.capacity() - before < kPiece) {
            data.reserve(qMax(before * 2, before + kPiece)); // resize() alone would grow by the piece each time
        }
        data.resize(before + kPiece);
        const ssize_t count = ::read(pipe, data.data() + before, static_cast<size_t>(kPiece));
        const int error = errno;
        data.resize(before + qMax<ssize_t>(count, 0));
        if (count == 0) {
            return false;
        }
        if (count < 0 && error != EINTR) {
            return error == EAGAIN;
        }
    }
    return true;
}

/// Reads whenever there is something, until the end.
class PipeReader {
public:
    PipeReader(int pipe, QByteArray &data, bool &isClosed) : m_notifier(pipe, QSocketNotifier::Read) {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this, pipe, &data, &isClosed] {
            if (!readAvailable(pipe, data)) {
                m_notifier.setEnabled(false);
                isClosed = true;
            }
        });
    }

private:
    QSocketNotifier m_notifier;
};

} // namespace

TaskOutputReader::TaskOutputReader(Tasks &tasks, QString path, QStringList arguments)
    : m_tasks(tasks), m_path(std::move(path)), m_arguments(std::move(arguments)) {}

void TaskOutputReader::launchTaskAndRunSynchronous(const std::function<void(qint32)> &onCreated) {
    const auto task = m_tasks.launch(m_path, m_arguments, Tasks::StandardError::Piped);
    if (!task) {
        throw launchException();
    }
    const qint32 pid = task->processIdentifier;
    logDetail("Launched process %d", pid);
    if (pid == 0) {
        __assert2("pid", "NSTask+OneLineTasksWithOutput", 183);
    }
    if (onCreated) {
        onCreated(pid);
    }
    runUntilComplete(*task);
    m_terminationStatus = m_tasks.terminationStatus(*task);
}

void TaskOutputReader::runUntilComplete(const PipedTask &task) {
    const PipeReader output(task.standardOutput.get(), standardOutput, outputClosed);
    const PipeReader error(task.standardError.get(), standardError, errorClosed);
    QSocketNotifier termination(task.termination.get(), QSocketNotifier::Read);
    QObject::connect(&termination, &QSocketNotifier::activated, &termination, [this, &termination] {
        termination.setEnabled(false);
        taskComplete = true;
    });
    QEventLoop loop;
    while (!(taskComplete && outputClosed && errorClosed)) {
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
}

} // namespace quillmark
