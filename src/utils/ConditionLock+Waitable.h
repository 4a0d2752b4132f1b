#pragma once

#include "utils/ConditionLock.h"

#include <memory>
#include <optional>
#include <string>

namespace quillmark {

// A condition lock as a state flag and a counter that threads can wait for. The lock is held for an instant only.

/// A new lock with that condition.
std::unique_ptr<ConditionLock> condition(std::int64_t value, const std::optional<std::string> &name = {});

/// Blocks until the condition is `value`, without limit; a line of detail every 10 seconds tells that it waits.
void waitCondition(ConditionLock &lock, std::int64_t value);
/// The same until a date at the latest. \returns whether the condition came to be in time.
bool waitCondition(ConditionLock &lock, std::int64_t value, Clock::Time beforeDate);

/// Change the condition and wake those who wait for the new one. \returns the condition before.
std::int64_t signalCondition(ConditionLock &lock, std::int64_t value);
std::int64_t signalIncCondition(ConditionLock &lock);
std::int64_t signalDecCondition(ConditionLock &lock);

bool isCondition(ConditionLock &lock, std::int64_t value);

} // namespace quillmark
