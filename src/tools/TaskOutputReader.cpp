#include "tools/TaskOutputReader.h"

#include "platform/MainThread.h"
#include "platform/Platform.h"
#include "platform/process/AtEnd.h"
#include "tools/LaunchException.h"
#include "utils/Assert.h"
#include "utils/Log.h"

#include <array>
#include <cerrno>
#include <unistd.h>

namespace quillmark {

namespace {

/// Appends what the pipe holds. \returns false at its end.
bool readAvailable(int pipe, std::string &data) {
    constexpr int kPiecesATurn = 16; // then other events have their turn
    std::array<char, 65536> piece;   // NOLINT(cppcoreguidelines-pro-type-member-init): written by what follows
    for (int turn = 0; turn < kPiecesATurn; ++turn) {
        const ssize_t count = uninterrupted([&] { return ::read(pipe, piece.data(), piece.size()); });
        if (count <= 0) {
            return count < 0 && errno == EAGAIN;
        }
        data.append(piece.data(), static_cast<size_t>(count));
    }
    return true;
}

} // namespace

void TaskOutputReader::launchTaskAndRunSynchronous(const std::function<void(std::int32_t)> &onCreated) {
    const auto task = platform().tasks.launch(m_task.launchPath, m_task.arguments, Tasks::StandardError::Piped);
    if (!task) {
        throw launchException();
    }
    const std::int32_t pid = task->processIdentifier;
    logDetail("Launched process %d", pid);
    if (pid == 0) {
        __assert2("pid", "NSTask+OneLineTasksWithOutput", 183);
    }
    AtEnd abandoned([&] { platform().tasks.abandon(*task); });
    if (onCreated) {
        onCreated(pid);
    }
    runUntilComplete(*task);
    abandoned.dismiss();
    m_terminationStatus = platform().tasks.terminationStatus(*task);
}

void TaskOutputReader::runUntilComplete(const PipedTask &task) {
    const int output = task.standardOutput.get();
    const int error = task.standardError.get();
    std::vector<Input> inputs = {
        {output, [this, output] { return standardOutNotification(output); }},
        {error, [this, error] { return standardErrorNotification(error); }},
        {task.termination.get(), [this] { return terminatedNotification(); }},
    };
    // Nothing is ever to be had of these; without any input there is nothing to wait for.
    std::erase_if(inputs, [](const Input &input) { return input.descriptor < 0; });
    platform().mainThread.serve(std::move(inputs));
}

bool TaskOutputReader::standardOutNotification(int pipe) {
    outputClosed = !readAvailable(pipe, standardOutput);
    return !outputClosed;
}

bool TaskOutputReader::standardErrorNotification(int pipe) {
    errorClosed = !readAvailable(pipe, standardError);
    return !errorClosed;
}

bool TaskOutputReader::terminatedNotification() {
    taskComplete = true;
    return false;
}

} // namespace quillmark
