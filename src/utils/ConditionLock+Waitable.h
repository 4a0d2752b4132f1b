#pragma once

#include "utils/ConditionLock.h"

#include <memory>

namespace quillmark {

// A condition lock as a state flag and a counter that threads can wait for. The lock is held for an instant only.

/// A new lock with that condition.
std::unique_ptr<ConditionLock> condition(qint64 value, const QString &name = {});

/// Blocks until the condition is `value`, without limit; a line of detail every 10 seconds tells that it waits.
void waitCondition(ConditionLock &lock, qint64 value);
/// The same until a date at the latest. \returns whether the condition came to be in time.
bool waitCondition(ConditionLock &lock, qint64 value, Clock::Time beforeDate);

/// Change the condition and wake those who wait for the new one. \returns the condition before.
qint64 signalCondition(ConditionLock &lock, qint64 value);
qint64 signalIncCondition(ConditionLock &lock);
qint64 signalDecCondition(ConditionLock &lock);

bool isCondition(ConditionLock &lock, qint64 value);

} // namespace quillmark
