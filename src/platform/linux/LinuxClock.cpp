#include "platform/linux/LinuxClock.h"

#include <thread>

namespace quillmark {

Clock::Time LinuxClock::now() const {
    return std::chrono::time_point_cast<std::chrono::microseconds>(std::chrono::system_clock::now());
}

void LinuxClock::sleep(std::chrono::microseconds duration) { std::this_thread::sleep_for(duration); }

bool LinuxClock::waitUntil(std::condition_variable &condition, std::unique_lock<std::mutex> &lock, Time deadline) {
    // Against the steady clock, so that nobody waits for hours when the time of day is set back.
    const auto left = deadline - now();
    return left > Time::duration::zero() && condition.wait_for(lock, left) == std::cv_status::no_timeout;
}

} // namespace quillmark
