#pragma once

#include "platform/Clock.h"

#include <mutex>
#include <vector>

namespace quillmark::test {

/// Virtual time: it stands still until somebody sleeps or sets it.
class FakeClock final : public Clock {
public:
    Time now() const override {
        const std::scoped_lock lock(m_mutex);
        return m_now;
    }
    void sleep(std::chrono::microseconds duration) override {
        const std::scoped_lock lock(m_mutex);
        m_now += duration;
        m_sleeps.push_back(duration);
    }
    void set(Time now) {
        const std::scoped_lock lock(m_mutex);
        m_now = now;
    }
    std::vector<std::chrono::microseconds> sleeps() const {
        const std::scoped_lock lock(m_mutex);
        return m_sleeps;
    }

private:
    mutable std::mutex m_mutex;
    Time m_now{};
    std::vector<std::chrono::microseconds> m_sleeps;
};

} // namespace quillmark::test
