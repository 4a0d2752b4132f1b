#include "support/LogFixture.h"
#include "support/Threads.h"
#include "utils/ConditionLock+Waitable.h"

#include <atomic>
#include <gmock/gmock.h>

namespace quillmark {
namespace {

using std::chrono::seconds;

/// Locks in virtual time.
class Waitable : public test::LogFixture {
protected:
    Clock::Time in(int count) const { return platform.clock.now() + seconds(count); }
};

TEST_F(Waitable, ALockBeginsWithItsCondition) {
    const auto lock = condition(7, "n");
    EXPECT_TRUE(isCondition(*lock, 7));
    EXPECT_FALSE(isCondition(*lock, 8));
    EXPECT_EQ(lock->name(), "n");
}

TEST_F(Waitable, SignallingAnswersTheConditionBefore) {
    const auto lock = condition(0);
    EXPECT_EQ(signalIncCondition(*lock), 0);
    EXPECT_TRUE(isCondition(*lock, 1));
    EXPECT_EQ(signalCondition(*lock, -5), 1);
    EXPECT_EQ(signalDecCondition(*lock), -5);
    EXPECT_TRUE(isCondition(*lock, -6));
}

TEST_F(Waitable, WaitingForTheConditionThatIsThereReturnsAtOnceAndLeavesIt) {
    const auto lock = condition(3);
    waitCondition(*lock, 3);
    EXPECT_TRUE(isCondition(*lock, 3));
    EXPECT_EQ(platform.clock.now(), in(0));
}

TEST_F(Waitable, AWaitOf25SecondsLeavesTwoLinesInTheLog) {
    const std::string file = logToFile(kLogLevelDetailed);
    const auto lock = condition(0, "repair");
    const Clock::Time arrival = in(25);
    platform.clock.at(arrival, [&] { signalCondition(*lock, 1); });
    waitCondition(*lock, 1);
    EXPECT_EQ(platform.clock.now(), arrival);
    const auto line = testing::MatchesRegex("Waiting for condition 1 in <ConditionLock: 0x[0-9a-f]+> \"repair\"");
    EXPECT_THAT(messagesOf(file), testing::ElementsAre(line, line));
}

TEST_F(Waitable, ALockWithoutANameSaysSo) {
    const std::string file = logToFile(kLogLevelDetailed);
    const auto lock = condition(0);
    platform.clock.at(in(11), [&] { signalCondition(*lock, 1); });
    waitCondition(*lock, 1);
    EXPECT_TRUE(messagesOf(file).at(0).ends_with("\"(null)\""));
}

TEST_F(Waitable, AnotherConditionDoesNotEndTheWait) {
    const auto lock = condition(0);
    platform.clock.at(in(1), [&] { signalCondition(*lock, 5); });
    platform.clock.at(in(2), [&] { signalCondition(*lock, 1); });
    waitCondition(*lock, 1);
    EXPECT_EQ(platform.clock.now(), Clock::Time(std::chrono::microseconds(1709648102123456)) + seconds(2));
}

TEST_F(Waitable, ADeadlineEndsTheWait) {
    const auto lock = condition(0);
    EXPECT_FALSE(waitCondition(*lock, 1, in(4)));
    signalCondition(*lock, 2); // the lock is not held
    platform.clock.at(in(3), [&] { signalCondition(*lock, 1); });
    EXPECT_TRUE(waitCondition(*lock, 1, in(4)));
    signalCondition(*lock, 2);
}

TEST_F(Waitable, ADeadlineInThePastOnlyLooks) {
    const auto lock = condition(0);
    EXPECT_FALSE(waitCondition(*lock, 1, in(-1)));
    EXPECT_TRUE(waitCondition(*lock, 0, in(-1)));
}

/// Locks in real time, between real threads.
class WaitableThreads : public testing::Test {};

TEST_F(WaitableThreads, NoChangeIsLostBetweenThem) {
    const auto lock = condition(0);
    test::onThreads(8, [&lock](int thread) {
        for (int i = 0; i < 5000; ++i) {
            thread % 4 == 0 ? signalDecCondition(*lock) : signalIncCondition(*lock);
        }
    });
    EXPECT_TRUE(isCondition(*lock, 6 * 5000 - 2 * 5000));
}

TEST_F(WaitableThreads, EveryWaiterWakesForItsOwnCondition) {
    const auto lock = condition(0);
    std::atomic<int> woken{0};
    test::onThreads(5, [&](int value) { // the first one wakes the second, and so on
        waitCondition(*lock, value);
        ++woken;
        signalIncCondition(*lock);
    });
    EXPECT_EQ(woken, 5);
    EXPECT_TRUE(isCondition(*lock, 5));
}

TEST_F(WaitableThreads, ARealDeadlineComes) {
    const auto lock = condition(0);
    EXPECT_FALSE(waitCondition(*lock, 1, nativePlatform().clock.now() + std::chrono::milliseconds(5)));
}

} // namespace
} // namespace quillmark
