#pragma once

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace quillmark::test {

/// A child process that waits for a signal.
class IdleProcess {
public:
    /// The signal that has ended it; 0 when none has.
    int endingSignal() const {
        int status = 0;
        ::waitpid(identifier, &status, 0);
        return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }

    const pid_t identifier = start();

private:
    static pid_t start() {
        const pid_t child = ::fork();
        if (child == 0) {
            ::pause();
            ::_exit(1);
        }
        return child;
    }
};

} // namespace quillmark::test
