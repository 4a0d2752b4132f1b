#pragma once

#include <QString>
#include <functional>

namespace quillmark {

/// Threads, and the way back to the main one.
class MainThread {
public:
    virtual ~MainThread() = default;

    /// Queues a call that the main thread makes in the order of queueing, and returns without waiting.
    virtual void post(std::function<void()> call) = 0;

    /// Starts a thread of that name, which its log lines show, too, and that nobody waits for.
    virtual void detachNewThread(const QString &name, std::function<void()> body) = 0;
};

} // namespace quillmark
