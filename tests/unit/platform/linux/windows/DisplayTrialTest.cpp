#include "platform/linux/windows/DisplayTrial.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

namespace quillmark {
namespace {

TEST(DisplayTrial, SucceedsWhenTheAttemptDoes) {
    DisplayTrial trial;
    trial.begin([] { return true; });
    EXPECT_TRUE(trial.isUnderWay());
    EXPECT_TRUE(trial.succeeds());
    EXPECT_FALSE(trial.isUnderWay());
}

TEST(DisplayTrial, FailsWhenTheAttemptDoes) {
    DisplayTrial trial;
    trial.begin([] { return false; });
    EXPECT_FALSE(trial.succeeds());
}

TEST(DisplayTrial, SurvivesAnAttemptThatAborts) {
    DisplayTrial trial;
    trial.begin([]() -> bool { std::abort(); });
    EXPECT_FALSE(trial.succeeds());
}

TEST(DisplayTrial, ShowsNothingOfWhatTheAttemptWrites) {
    testing::internal::CaptureStderr();
    DisplayTrial trial;
    trial.begin([] { return ::write(STDERR_FILENO, "no display", 10) == 10; });
    EXPECT_TRUE(trial.succeeds());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(DisplayTrial, HasNoAnswerBeforeItBeginsAndOneAnswerEachTime) {
    DisplayTrial trial;
    EXPECT_FALSE(trial.succeeds());
    trial.begin([] { return true; });
    EXPECT_TRUE(trial.succeeds());
    EXPECT_FALSE(trial.succeeds());
    trial.begin([] { return true; });
    EXPECT_TRUE(trial.succeeds());
}

} // namespace
} // namespace quillmark
