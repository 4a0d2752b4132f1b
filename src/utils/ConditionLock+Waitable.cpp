#include "utils/ConditionLock+Waitable.h"

#include "platform/Platform.h"
#include "utils/Log.h"

namespace quillmark {

std::unique_ptr<ConditionLock> condition(std::int64_t value, const std::optional<std::string> &name) {
    return std::make_unique<ConditionLock>(value, name, platform().clock);
}

void waitCondition(ConditionLock &lock, std::int64_t value) {
    constexpr std::chrono::seconds kPatience(10);
    while (!lock.lockWhenCondition(value, lock.clock().now() + kPatience)) {
        logDetail("Waiting for condition %ld in <ConditionLock: 0x%llx> \"%@\"", value,
                  reinterpret_cast<std::uintptr_t>(&lock), lock.name()); // NOLINT: as a number
    }
    lock.unlock();
}

bool waitCondition(ConditionLock &lock, std::int64_t value, Clock::Time beforeDate) {
    if (!lock.lockWhenCondition(value, beforeDate)) {
        return false;
    }
    lock.unlock();
    return true;
}

std::int64_t signalCondition(ConditionLock &lock, std::int64_t value) {
    const std::int64_t previous = lock.lock();
    lock.unlockWithCondition(value);
    return previous;
}

std::int64_t signalIncCondition(ConditionLock &lock) {
    const std::int64_t previous = lock.lock();
    lock.unlockWithCondition(previous + 1);
    return previous;
}

std::int64_t signalDecCondition(ConditionLock &lock) {
    const std::int64_t previous = lock.lock();
    lock.unlockWithCondition(previous - 1);
    return previous;
}

bool isCondition(ConditionLock &lock, std::int64_t value) {
    const bool isEqual = lock.lock() == value;
    lock.unlock();
    return isEqual;
}

} // namespace quillmark
