#include "utils/ConditionLock+Waitable.h"

#include "platform/Platform.h"
#include "utils/FormattedText.h"
#include "utils/Log.h"

namespace quillmark {

std::unique_ptr<ConditionLock> condition(qint64 value, const QString &name) {
    return std::make_unique<ConditionLock>(value, name, platform().clock);
}

void waitCondition(ConditionLock &lock, qint64 value) {
    constexpr std::chrono::seconds kPatience(10);
    while (!lock.lockWhenCondition(value, lock.clock().now() + kPatience)) {
        const QString description = formatted("<ConditionLock: 0x%llx>", reinterpret_cast<quintptr>(&lock)); // NOLINT
        logDetail("Waiting for condition %ld in %@ \"%@\"", value, description, lock.name());
    }
    lock.unlock();
}

bool waitCondition(ConditionLock &lock, qint64 value, Clock::Time beforeDate) {
    if (!lock.lockWhenCondition(value, beforeDate)) {
        return false;
    }
    lock.unlock();
    return true;
}

qint64 signalCondition(ConditionLock &lock, qint64 value) {
    const qint64 previous = lock.lock();
    lock.unlockWithCondition(value);
    return previous;
}

qint64 signalIncCondition(ConditionLock &lock) {
    const qint64 previous = lock.lock();
    lock.unlockWithCondition(previous + 1);
    return previous;
}

qint64 signalDecCondition(ConditionLock &lock) {
    const qint64 previous = lock.lock();
    lock.unlockWithCondition(previous - 1);
    return previous;
}

bool isCondition(ConditionLock &lock, qint64 value) {
    const bool isEqual = lock.lock() == value;
    lock.unlock();
    return isEqual;
}

} // namespace quillmark
