#include "platform/Platform.h"
#include "utils/Assert.h"
#include "utils/Raise.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillmark {
namespace {

/// How a child process ends, or stops, that is traced by this one the way a debugger traces it.
int statusOfTraced(void (*body)()) {
    const pid_t child = ::fork();
    if (child == 0) {
        const int nothing = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        ::dup2(nothing, STDERR_FILENO);
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        body();
        ::_exit(0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    if (WIFSTOPPED(status)) {
        ::kill(child, SIGKILL);
        int ignored = 0;
        ::waitpid(child, &ignored, 0);
    }
    return status;
}

void expectTrapIn(void (*body)()) {
    const int status = statusOfTraced(body);
    ASSERT_TRUE(WIFSTOPPED(status));
    EXPECT_EQ(WSTOPSIG(status), SIGTRAP);
}

TEST(TracedAssertion, StopsInTheRealTracerAtATrap) {
    expectTrapIn([] { __assert2("pid", "unit", 183); });
}

TEST(TracedAssertion, RaisingStopsThereToo) {
    expectTrapIn([] { __raiseException1("N", "%@", 1); });
}

TEST(TracedAssertion, ATracedProcessKnowsItsTracer) {
    const int status = statusOfTraced([] { ::_exit(IsDebuggerPresent() ? 7 : 8); });
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

} // namespace
} // namespace quillmark
