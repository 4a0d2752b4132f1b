#include "platform/linux/LinuxClock.h"

#include <thread>

namespace quillmark {

Clock::Time LinuxClock::now() const {
    return std::chrono::time_point_cast<std::chrono::microseconds>(std::chrono::system_clock::now());
}

void LinuxClock::sleep(std::chrono::microseconds duration) { std::this_thread::sleep_for(duration); }

} // namespace quillmark
