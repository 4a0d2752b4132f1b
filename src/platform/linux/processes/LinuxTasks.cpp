#include "platform/linux/processes/LinuxTasks.h"

#include "platform/linux/processes/Spawn.h"
#include "platform/process/EnvironmentVariable.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <string_view>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

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

/// This process's environment, in which programs are looked for in a folder first, when one is given.
std::vector<std::string> environmentWith(const std::optional<std::string> &programFolder) {
    std::vector<std::string> variables;
    for (char **variable = environ; *variable != nullptr; ++variable) {
        if (!programFolder || !std::string_view(*variable).starts_with("PATH=")) {
            variables.emplace_back(*variable);
        }
    }
    if (programFolder) {
        const std::string otherFolders = environmentVariable("PATH");
        variables.push_back("PATH=" + *programFolder + ':' + (otherFolders.empty() ? "/usr/bin:/bin" : otherFolders));
    }
    return variables;
}

/// \returns the process's number, or 0.
pid_t childOf(Spawn &spawn, const std::string &path, const std::vector<std::string> &arguments,
              const std::optional<std::string> &programFolder = {}) {
    std::vector<std::string> texts{path};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = environmentWith(programFolder);
    pid_t child = 0;
    return spawn.start(std::move(texts), Spawn::pointersTo(variables).data(), &child) == 0 ? child : 0;
}

/// Lest it stays in the system's table when it has ended.
void waitInBackground(pid_t child) {
    std::thread([child] { statusAtEnd(child); }).detach();
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
    Spawn spawn;
    const pid_t child = childOf(spawn, path, arguments, programFolder);
    const auto status = child != 0 ? statusAtEnd(child) : std::nullopt;
    if (!status) {
        return std::nullopt;
    }
    return WIFEXITED(*status) ? WEXITSTATUS(*status) : kEndedBySignal + WTERMSIG(*status);
}

bool LinuxTasks::runUnwaited(const std::string &path, const std::vector<std::string> &arguments) {
    Spawn spawn;
    const pid_t child = childOf(spawn, path, arguments);
    if (child != 0) {
        waitInBackground(child);
    }
    return child != 0;
}

/// The system sees to the program's end after this process's own.
bool LinuxTasks::start(const std::string &path, const std::vector<std::string> &arguments,
                       const std::optional<std::string> &programFolder) {
    Spawn spawn;
    spawn.separate();
    return childOf(spawn, path, arguments, programFolder) != 0;
}

std::optional<PipedTask> LinuxTasks::launch(const std::string &path, const std::vector<std::string> &arguments,
                                            StandardError standardError) {
    auto output = makePipe();
    auto error = standardError == StandardError::Piped ? makePipe() : Pipe{};
    if (!output || !error) {
        return std::nullopt;
    }
    Spawn spawn;
    spawn.duplicate(output->writing.get(), STDOUT_FILENO);
    if (error->writing.isOpen()) {
        spawn.duplicate(error->writing.get(), STDERR_FILENO);
    }
    const pid_t child = childOf(spawn, path, arguments);
    if (child == 0) {
        return std::nullopt;
    }
    Descriptor termination = endOf(child);
    if (!termination.isOpen()) { // nobody could wait for the child
        ::kill(child, SIGKILL);
        statusAtEnd(child);
        return std::nullopt;
    }
    return PipedTask{child, std::move(output->reading), std::move(error->reading), std::move(termination)};
}

int LinuxTasks::terminationStatus(const PipedTask &task) {
    constexpr int kUnknown = -1;
    const auto status = statusAtEnd(task.processIdentifier);
    if (!status) {
        return kUnknown;
    }
    return WIFEXITED(*status) ? WEXITSTATUS(*status) : WTERMSIG(*status);
}

void LinuxTasks::abandon(const PipedTask &task) { waitInBackground(task.processIdentifier); }

} // namespace quillmark
