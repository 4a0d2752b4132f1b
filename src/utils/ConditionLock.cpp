#include "utils/ConditionLock.h"

namespace quillmark {

ConditionLock::ConditionLock(std::int64_t condition, std::optional<std::string> name, Clock &clock)
    : m_condition(condition), m_name(std::move(name)), m_clock(clock) {}

std::int64_t ConditionLock::lock() {
    m_mutex.lock();
    return m_condition;
}

bool ConditionLock::lockWhenCondition(std::int64_t value, Clock::Time deadline) {
    std::unique_lock lock(m_mutex);
    ++m_waiters;
    bool isInTime = true;
    while (m_condition != value && isInTime) {
        isInTime = m_clock.waitUntil(m_changed, lock, deadline);
    }
    --m_waiters;
    if (m_condition != value) {
        return false;
    }
    lock.release(); // stays taken
    return true;
}

void ConditionLock::unlockWithCondition(std::int64_t value) {
    m_condition = value;
    const bool isAwaited = m_waiters > 0;
    m_mutex.unlock();
    if (isAwaited) {
        m_changed.notify_all(); // each waits for a value of its own
    }
}

} // namespace quillmark
