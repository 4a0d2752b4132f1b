/// Tries what a confined process must not be able to do, and writes one line for each: what, and the error it got.
/// Started by the administrator. Its one argument is the process id of somebody whom it tries to reach.

#include "process/Caller.h"
#include "process/Confinement.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <string>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

void attempt(int output, const char *what, long result) {
    const char *const answer = result >= 0 ? "done" : std::strerror(errno); // NOLINT(concurrency-mt-unsafe): one thread
    const std::string line = std::string(what) + ": " + answer + '\n';
    if (::write(output, line.data(), line.size()) < 0) {
        std::abort();
    }
}

void attemptAll(int output, pid_t somebody) {
    char *const arguments[] = {nullptr};
    attempt(output, "open a file that everybody may read", ::open("/etc/passwd", O_RDONLY | O_CLOEXEC));
    attempt(output, "open itself", ::open("/proc/self/mem", O_RDWR | O_CLOEXEC));
    attempt(output, "make a file", ::open("/tmp/made", O_WRONLY | O_CREAT | O_CLOEXEC, S_IRWXU));
    attempt(output, "make a folder", ::mkdir("/tmp/folder", S_IRWXU));
    attempt(output, "remove a file", ::unlink("/tmp/everybodys"));
    attempt(output, "change a mode", ::chmod("/tmp/everybodys", S_IRWXU));
    attempt(output, "see whether there is a file", ::access("/etc/passwd", F_OK));
    attempt(output, "make a socket", ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    attempt(output, "start a process", ::fork());
    attempt(output, "become another program", ::execv("/bin/true", arguments));
    attempt(output, "end somebody", ::kill(somebody, SIGKILL));
    attempt(output, "look into somebody", ::ptrace(PTRACE_ATTACH, somebody, nullptr, nullptr));
    attempt(output, "become the administrator", ::setuid(0));
    attempt(output, "copy its descriptor", ::dup(output));
    attempt(output, "read from its descriptor", ::read(output, nullptr, 0));
    attempt(output, "use a lot of memory",
            ::mmap(nullptr, size_t{2} << 30U, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) == MAP_FAILED
                ? -1
                : 0);
    std::vector<char> some(size_t{16} << 20U, 'x'); // and what it must be able to do
    attempt(output, "compute in memory", some.back() == 'x' ? 0 : -1);
}

} // namespace

int main(int count, char **arguments) {
    if (count != 2) {
        return EXIT_FAILURE;
    }
    const pid_t somebody = std::atoi(arguments[1]);
    updateqm::Caller::start();
    const pid_t child = ::fork();
    if (child == 0) {
        attemptAll(updateqm::confine(STDOUT_FILENO), somebody);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
}
