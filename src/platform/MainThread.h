#pragma once

#include <functional>

namespace quillmark {

/// The way back to the main thread.
class MainThread {
public:
    virtual ~MainThread() = default;

    /// Queues a call that the main thread makes in the order of queueing, and returns without waiting.
    virtual void post(std::function<void()> call) = 0;
};

} // namespace quillmark
