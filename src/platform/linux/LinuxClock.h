#pragma once

#include "platform/Clock.h"

namespace quillmark {

class LinuxClock final : public Clock {
public:
    Time now() const override;
    void sleep(std::chrono::microseconds duration) override;
    bool waitUntil(std::condition_variable &condition, std::unique_lock<std::mutex> &lock, Time deadline) override;
};

} // namespace quillmark
