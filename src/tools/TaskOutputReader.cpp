#include "tools/TaskOutputReader.h"

#include "tools/LaunchException.h"
#include "utils/Assert.h"
#include "utils/Log.h"

#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <QScopeGuard>
#include <QSocketNotifier>
#include <cerrno>
#include <memory>
#include <poll.h>
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

} // namespace

TaskOutputReader::TaskOutputReader(Tasks &tasks, Task task) : m_tasks(tasks), m_task(std::move(task)) {}

void TaskOutputReader::launchTaskAndRunSynchronous(const std::function<void(qint32)> &onCreated) {
    const auto task = m_tasks.launch(m_task.launchPath, m_task.arguments, Tasks::StandardError::Piped);
    if (!task) {
        throw launchException();
    }
    const qint32 pid = task->processIdentifier;
    logDetail("Launched process %d", pid);
    if (pid == 0) {
        __assert2("pid", "NSTask+OneLineTasksWithOutput", 183);
    }
    auto abandoned = qScopeGuard([&] { m_tasks.abandon(*task); });
    if (onCreated) {
        onCreated(pid);
    }
    runUntilComplete(*task);
    abandoned.dismiss();
    m_terminationStatus = m_tasks.terminationStatus(*task);
}

void TaskOutputReader::runUntilComplete(const PipedTask &task) {
    std::vector<Source> sources = {
        {task.standardOutput.get(), &TaskOutputReader::standardOutNotification},
        {task.standardError.get(), &TaskOutputReader::standardErrorNotification},
        {task.termination.get(), &TaskOutputReader::terminatedNotification},
    };
    // Nothing is ever to be had of these; without any source there is nothing to wait for.
    std::erase_if(sources, [](const Source &source) { return source.descriptor < 0; });
    const bool hasEventLoop = QAbstractEventDispatcher::instance() != nullptr;
    hasEventLoop ? turnEventLoop(sources, *this) : turnPoll(sources, *this);
}

void TaskOutputReader::turnEventLoop(const std::vector<Source> &sources, TaskOutputReader &reader) {
    std::vector<std::unique_ptr<QSocketNotifier>> notifiers;
    size_t open = sources.size();
    for (const Source &source : sources) {
        notifiers.push_back(std::make_unique<QSocketNotifier>(source.descriptor, QSocketNotifier::Read));
        QSocketNotifier *const notifier = notifiers.back().get();
        QObject::connect(notifier, &QSocketNotifier::activated, notifier, [&reader, &open, source, notifier] {
            if (!(reader.*source.notification)(source.descriptor)) {
                notifier->setEnabled(false);
                --open;
            }
        });
    }
    QEventLoop loop;
    while (open > 0) {
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void TaskOutputReader::turnPoll(std::vector<Source> sources, TaskOutputReader &reader) {
    while (!sources.empty()) {
        std::vector<pollfd> waits;
        waits.reserve(sources.size());
        for (const Source &source : sources) {
            waits.push_back({source.descriptor, POLLIN, 0});
        }
        ::poll(waits.data(), waits.size(), -1);
        for (size_t place = waits.size(); place-- > 0;) {
            if (waits[place].revents != 0 && !(reader.*sources[place].notification)(sources[place].descriptor)) {
                sources.erase(sources.begin() + static_cast<std::ptrdiff_t>(place));
            }
        }
    }
}

bool TaskOutputReader::standardOutNotification(int pipe) {
    outputClosed = !readAvailable(pipe, standardOutput);
    return !outputClosed;
}

bool TaskOutputReader::standardErrorNotification(int pipe) {
    errorClosed = !readAvailable(pipe, standardError);
    return !errorClosed;
}

bool TaskOutputReader::terminatedNotification(int /*termination*/) {
    taskComplete = true;
    return false;
}

} // namespace quillmark
