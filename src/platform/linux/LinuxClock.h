#pragma once

#include "platform/Clock.h"

namespace quillmark {

class LinuxClock final : public Clock {
public:
    Time now() const override;
    void sleep(std::chrono::microseconds duration) override;
};

} // namespace quillmark
