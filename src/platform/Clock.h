#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace quillmark {

/// The time of day, and pauses.
class Clock {
public:
    using Time = std::chrono::sys_time<std::chrono::microseconds>;

    virtual ~Clock() = default;

    virtual Time now() const = 0;
    /// Blocks the calling thread.
    virtual void sleep(std::chrono::microseconds duration) = 0;
    /// Waits to be notified, or until the deadline; may return without either. \returns false when the deadline has
    /// passed.
    virtual bool waitUntil(std::condition_variable &condition, std::unique_lock<std::mutex> &lock, Time deadline) = 0;
};

} // namespace quillmark
