#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quillmark {

/// A descriptor that is waited for, and what is done whenever it has something to be read.
struct Input {
    int descriptor;
    /// \returns false when there will be no more.
    std::function<bool()> onReadable;
};

/// Serves the inputs until each has come to its end. They are all that the calling thread waits for.
void serveAlone(std::vector<Input> inputs);

/// Threads, and the way back to the main one.
class MainThread {
public:
    virtual ~MainThread() = default;

    /// Queues a call that the main thread makes in the order of queueing, and returns without waiting.
    virtual void post(std::function<void()> call) = 0;

    /// Waits on the main thread until something is to be done there, be it a queued call or the user's, and does it.
    virtual void runOnce() = 0;

    /// Serves the inputs on the calling thread until each has come to its end. The main thread also does meanwhile what
    /// else is to be done there.
    virtual void serve(std::vector<Input> inputs) = 0;

    /// Starts a thread of that name, which its log lines show, too, and that nobody waits for.
    virtual void detachNewThread(const std::string &name, std::function<void()> body) = 0;
};

} // namespace quillmark
