#include "platform/linux/LinuxTasks.h"

#include "platform/EnvironmentVariable.h"
#include "platform/linux/DetachedSpawn.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern "C" { // which the header of glibc 2.36 does not say itself
#include <sys/pidfd.h>
}

namespace quillmark {

namespace {

/// A pipe whose reading end never blocks. Neither end is inherited.
struct Pipe {
    Descriptor reading;
    Descriptor writing;
};

std::optional<Pipe> makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    constexpr int kCapacity = 1 << 20; // fewer turns for much output; a refusal does no harm
    ::fcntl(ends[0], F_SETPIPE_SZ, kCapacity);
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    return Pipe{Descriptor(ends[0]), Descriptor(ends[1])};
}

/// The strings of a program's arguments, the first of which is the program itself, as the system wants them.
class ArgumentVector {
public:
    ArgumentVector(const std::string &program, const std::vector<std::string> &arguments) : m_texts{program} {
        m_texts.insert(m_texts.end(), arguments.begin(), arguments.end());
        for (std::string &text : m_texts) {
            m_pointers.push_back(text.data());
        }
        m_pointers.push_back(nullptr);
    }
    const char *program() const { return m_pointers.front(); }
    char *const *data() const { return m_pointers.data(); }

private:
    std::vector<std::string> m_texts;
    std::vector<char *> m_pointers;
};

/// This process's environment, in which programs are looked for in a folder first, when one is given.
class Environment {
public:
    explicit Environment(const std::optional<std::string> &programFolder) {
        for (char **variable = environ; *variable != nullptr; ++variable) {
            if (!programFolder || !std::string_view(*variable).starts_with("PATH=")) {
                m_variables.push_back(*variable);
            }
        }
        if (programFolder) {
            const std::string otherFolders = environmentVariable("PATH");
            m_path = "PATH=" + *programFolder + ':' + (otherFolders.empty() ? "/usr/bin:/bin" : otherFolders);
            m_variables.push_back(m_path.data());
        }
        m_variables.push_back(nullptr);
    }
    char *const *data() const { return m_variables.data(); }

private:
    std::string m_path;
    std::vector<char *> m_variables;
};

/// \param streams what becomes the child's standard output and standard error; null leaves them as they are.
/// \returns the process's number, or 0.
pid_t spawn(const std::string &path, const std::vector<std::string> &arguments, const std::pair<int, int> *streams,
            const std::optional<std::string> &programFolder = {}) {
    posix_spawn_file_actions_t actions;
    if (::posix_spawn_file_actions_init(&actions) != 0) {
        return 0;
    }
    if (streams != nullptr) {
        ::posix_spawn_file_actions_adddup2(&actions, streams->first, STDOUT_FILENO);
        ::posix_spawn_file_actions_adddup2(&actions, streams->second, STDERR_FILENO);
    }
    const ArgumentVector vector(path, arguments);
    pid_t child = 0;
    const Environment environment(programFolder);
    const int error = ::posix_spawn(&child, vector.program(), &actions, nullptr, vector.data(), environment.data());
    ::posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? child : 0;
}

/// The status as waitpid gives it; nothing when somebody else has it, or the system does not keep it.
std::optional<int> waitFor(pid_t child) {
    int status = 0;
    pid_t ended = -1;
    do {
        ended = ::waitpid(child, &status, 0);
    } while (ended < 0 && errno == EINTR);
    return ended == child ? std::optional(status) : std::nullopt;
}

/// Lest it stays in the system's table when it has ended.
void waitInBackground(pid_t child) {
    std::thread([child] { waitFor(child); }).detach();
}

} // namespace

LinuxTasks::LinuxTasks() {
    struct sigaction current {};
    if (::sigaction(SIGCHLD, nullptr, &current) == 0 && current.sa_handler == SIG_IGN) {
        ::signal(SIGCHLD, SIG_DFL);
    }
}

std::optional<int> LinuxTasks::run(const std::string &path, const std::vector<std::string> &arguments,
                                   const std::optional<std::string> &programFolder) {
    constexpr int kEndedBySignal = 128;
    const pid_t child = spawn(path, arguments, nullptr, programFolder);
    const auto status = child != 0 ? waitFor(child) : std::nullopt;
    if (!status) {
        return std::nullopt;
    }
    return WIFEXITED(*status) ? WEXITSTATUS(*status) : kEndedBySignal + WTERMSIG(*status);
}

bool LinuxTasks::runUnwaited(const std::string &path, const std::vector<std::string> &arguments) {
    const pid_t child = spawn(path, arguments, nullptr);
    if (child != 0) {
        waitInBackground(child);
    }
    return child != 0;
}

/// The system sees to the program's end after this process's own.
bool LinuxTasks::start(const std::string &path, const std::vector<std::string> &arguments,
                       const std::optional<std::string> &programFolder) {
    const Environment environment(programFolder);
    const ArgumentVector vector(path, arguments);
    DetachedSpawn spawn;
    spawn.separate();
    return spawn.start(vector.program(), vector.data(), environment.data()) == 0;
}

std::optional<PipedTask> LinuxTasks::launch(const std::string &path, const std::vector<std::string> &arguments,
                                            StandardError standardError) {
    auto output = makePipe();
    auto error = standardError == StandardError::Piped ? makePipe() : Pipe{};
    if (!output || !error) {
        return std::nullopt;
    }
    const std::pair streams(output->writing.get(), error->writing.isOpen() ? error->writing.get() : STDERR_FILENO);
    const pid_t child = spawn(path, arguments, &streams);
    if (child == 0) {
        return std::nullopt;
    }
    Descriptor termination(::pidfd_open(child, 0));
    if (!termination.isOpen()) { // too many descriptors are open: nobody could wait for the child
        ::kill(child, SIGKILL);
        waitFor(child);
        return std::nullopt;
    }
    return PipedTask{child, std::move(output->reading), std::move(error->reading), std::move(termination)};
}

int LinuxTasks::terminationStatus(const PipedTask &task) {
    constexpr int kUnknown = -1;
    const auto status = waitFor(task.processIdentifier);
    if (!status) {
        return kUnknown;
    }
    return WIFEXITED(*status) ? WEXITSTATUS(*status) : WTERMSIG(*status);
}

void LinuxTasks::abandon(const PipedTask &task) { waitInBackground(task.processIdentifier); }

} // namespace quillmark
