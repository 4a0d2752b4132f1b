#include "platform/linux/windows/DisplayTrial.h"

#include "platform/linux/processes/Spawn.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace quillmark {

namespace {

/// How long a display may take to answer. A remote one needs a second at worst.
constexpr int kPatience = 15'000; // ms

/// The user is to learn nothing of the attempt, and neither is his session.
void becomeUnnoticed() {
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    std::signal(SIGABRT, SIG_DFL);
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
    ::unsetenv("SESSION_MANAGER"); // NOLINT(concurrency-mt-unsafe): there is one thread
}

void giveTime(pid_t child) {
    const Descriptor end = endOf(child);
    pollfd hasEnded{end.get(), POLLIN, 0};
    if (end.isOpen()) {
        uninterrupted([&] { return ::poll(&hasEnded, 1, kPatience); });
    }
}

} // namespace

void DisplayTrial::begin(const std::function<bool()> &attempt) {
    m_child = ::fork();
    if (m_child == 0) {
        becomeUnnoticed();
        ::_exit(attempt() ? EXIT_SUCCESS : EXIT_FAILURE);
    }
}

bool DisplayTrial::succeeds() {
    const pid_t child = std::exchange(m_child, 0);
    if (child <= 0) {
        return false;
    }
    giveTime(child);
    ::kill(child, SIGKILL); // it may still wait for the display
    const int status = statusAtEnd(child).value_or(0);
    return WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
}

} // namespace quillmark
