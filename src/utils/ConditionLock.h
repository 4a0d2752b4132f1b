#pragma once

#include "platform/Clock.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace quillmark {

/// A lock that carries a number, its condition. A thread takes it when the condition has a certain value, and may leave
/// another one behind.
class ConditionLock {
public:
    /// \param name for logs; may be absent.
    ConditionLock(std::int64_t condition, std::optional<std::string> name, Clock &clock);
    ConditionLock(const ConditionLock &) = delete;
    ConditionLock &operator=(const ConditionLock &) = delete;
    ~ConditionLock() = default;

    const std::optional<std::string> &name() const { return m_name; }

    /// Takes the lock, whatever the condition is, and \returns the condition.
    std::int64_t lock();
    /// Takes the lock when the condition is `value`. \returns false when that was not so before the deadline; then the
    /// lock is not taken.
    bool lockWhenCondition(std::int64_t value, Clock::Time deadline);
    /// Releases the lock and leaves the condition as it is.
    void unlock() { m_mutex.unlock(); }
    /// Releases the lock with a new condition, and wakes those who wait for one.
    void unlockWithCondition(std::int64_t value);

    Clock &clock() const { return m_clock; }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::int64_t m_condition;
    int m_waiters = 0;
    const std::optional<std::string> m_name;
    Clock &m_clock;
};

} // namespace quillmark
