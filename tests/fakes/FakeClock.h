#pragma once

#include "platform/Clock.h"

#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

namespace quillmark::test {

/// Virtual time: it stands still until somebody sleeps or sets it.
class FakeClock final : public Clock {
public:
    Time now() const override {
        if (onNow) {
            onNow();
        }
        const std::scoped_lock lock(m_mutex);
        return m_now;
    }
    void sleep(std::chrono::microseconds duration) override {
        if (onSleep) {
            onSleep();
        }
        const std::scoped_lock lock(m_mutex);
        m_now += duration;
        m_sleeps.push_back(duration);
    }
    /// Time passes at once: what is due before the deadline happens, with the lock released, else the deadline comes.
    bool waitUntil(std::condition_variable & /*condition*/, std::unique_lock<std::mutex> &lock,
                   Time deadline) override {
        std::unique_lock own(m_mutex);
        const auto due = m_schedule.begin();
        if (due == m_schedule.end() || due->first > deadline) {
            m_now = std::max(m_now, deadline);
            return false;
        }
        m_now = std::max(m_now, due->first);
        const auto action = due->second;
        m_schedule.erase(due);
        own.unlock();
        lock.unlock();
        action();
        lock.lock();
        return true;
    }
    /// Lets something happen at a time that somebody waits for.
    void at(Time time, std::function<void()> action) {
        const std::scoped_lock lock(m_mutex);
        m_schedule.emplace(time, std::move(action));
    }
    std::function<void()> onSleep; ///< called before each sleep
    std::function<void()> onNow;   ///< called before the time is told

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
    std::multimap<Time, std::function<void()>> m_schedule;
    std::vector<std::chrono::microseconds> m_sleeps;
};

} // namespace quillmark::test
