#pragma once

#include <chrono>

namespace quillmark {

/// The time of day, and pauses.
class Clock {
public:
    using Time = std::chrono::sys_time<std::chrono::microseconds>;

    virtual ~Clock() = default;

    virtual Time now() const = 0;
    /// Blocks the calling thread.
    virtual void sleep(std::chrono::microseconds duration) = 0;
};

} // namespace quillmark
