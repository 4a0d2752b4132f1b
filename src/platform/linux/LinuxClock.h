#pragma once

#include "platform/Clock.h"

#include <thread>

namespace quillmark {

class LinuxClock final : public Clock {
public:
    Time now() const override {
        return std::chrono::time_point_cast<std::chrono::microseconds>(std::chrono::system_clock::now());
    }

    void sleep(std::chrono::microseconds duration) override { std::this_thread::sleep_for(duration); }

    /// Against the steady clock, so that nobody waits for hours when the time of day is set back.
    bool waitUntil(std::condition_variable &condition, std::unique_lock<std::mutex> &lock, Time deadline) override {
        const auto left = deadline - now();
        return left > Time::duration::zero() && condition.wait_for(lock, left) == std::cv_status::no_timeout;
    }
};

} // namespace quillmark
