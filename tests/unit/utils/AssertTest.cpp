#include "utils/Assert.h"
#include "support/LogFixture.h"
#include "utils/Exception.h"
#include "utils/Folders.h"
#include "utils/Raise.h"

#include <csignal>
#include <sys/resource.h>

namespace quillmark {
namespace {

using testing::KilledBySignal;

class AssertDeathTest : public test::LogFixture {
protected:
    AssertDeathTest() {
        const struct rlimit noCoreFiles = {0, 0};
        ::setrlimit(RLIMIT_CORE, &noCoreFiles);
    }
};

TEST_F(AssertDeathTest, AFailureIsLoggedWithExpressionFileAndLineAndAborts) {
    EXPECT_EXIT(__assert2("[vAndB count] == 2", "utils", 12), KilledBySignal(SIGABRT),
                "\\(ERR\\) .*ASSERTION ERROR: \\[vAndB count\\] == 2 \\(file \"utils\", line 12\\)\n");
}

TEST_F(AssertDeathTest, TheMacroPassesItsTexts) {
    EXPECT_EXIT(QUILLMARK_ASSERT(1 > 2, "pid", "unit"), KilledBySignal(SIGABRT),
                "ASSERTION ERROR: pid \\(file \"unit\", line");
}

TEST_F(AssertDeathTest, TheLineIsInTheLogFileWhenTheProcessHasEnded) {
    const std::string file = logToFile(kLogLevelError);
    EXPECT_EXIT(__assert2("x", "y", 1), KilledBySignal(SIGABRT), "");
    EXPECT_EQ(messagesOf(file), test::Lines{"ASSERTION ERROR: x (file \"y\", line 1)"});
}

TEST_F(AssertDeathTest, UnderADebuggerItStopsAtATrapInsteadOfAborting) {
    platform.systemInfo.traced = true;
    EXPECT_EXIT(__assert2("x", "y", 1), KilledBySignal(SIGTRAP), "ASSERTION ERROR: x");
}

TEST_F(AssertDeathTest, UnderADebuggerRaisingStopsAtATrapToo) {
    platform.systemInfo.traced = true;
    EXPECT_EXIT(__raiseException1("N", "%@", 1), KilledBySignal(SIGTRAP), "");
}

TEST_F(AssertDeathTest, AFolderPathMustBePresent) {
    EXPECT_EXIT(ensureFolderPathExists(std::nullopt), KilledBySignal(SIGABRT),
                "ASSERTION ERROR: folderPath \\(file \"utils\"");
}

TEST(Assert, WhatHoldsIsPassedOver) { QUILLMARK_ASSERT(2 > 1, "x", "y"); }

} // namespace
} // namespace quillmark
