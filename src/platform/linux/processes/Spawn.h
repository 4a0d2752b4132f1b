#pragma once

#include "platform/process/Descriptor.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <vector>

extern "C" { // which this header of the C library forgets in version 2.36
#include <sys/pidfd.h>
}

namespace quillmark {

/// The start of a program, which shares with this process what it is not told to leave.
class Spawn {
public:
    Spawn() {
        // Neither of them fails: they have nothing to allocate.
        ::posix_spawn_file_actions_init(&m_actions);
        ::posix_spawnattr_init(&m_attributes);
    }
    Spawn(const Spawn &) = delete;
    Spawn &operator=(const Spawn &) = delete;
    ~Spawn() {
        ::posix_spawn_file_actions_destroy(&m_actions);
        ::posix_spawnattr_destroy(&m_attributes);
    }

    /// Gives the program a file as one of its standard streams.
    void open(int stream, const char *path, int flags) {
        ::posix_spawn_file_actions_addopen(&m_actions, stream, path, flags, 0);
    }
    /// Gives it an open descriptor as one of them.
    void duplicate(int descriptor, int stream) { ::posix_spawn_file_actions_adddup2(&m_actions, descriptor, stream); }
    /// Leaves it nothing in common with this process: a session of its own, no blocked or ignored signal, no descriptor
    /// but the standard streams, which the caller sees to.
    void detach() {
        sigset_t none;
        sigset_t all;
        ::sigemptyset(&none);
        ::sigfillset(&all);
        ::posix_spawnattr_setsigmask(&m_attributes, &none);
        ::posix_spawnattr_setsigdefault(&m_attributes, &all);
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        m_isDetached = true;
    }
    /// The same without this process's streams, and in a current folder that keeps no volume busy.
    void separate() {
        detach();
        open(STDIN_FILENO, "/dev/null", O_RDONLY);
        open(STDOUT_FILENO, "/dev/null", O_WRONLY);
        open(STDERR_FILENO, "/dev/null", O_WRONLY);
        ::posix_spawn_file_actions_addchdir_np(&m_actions, "/");
    }

    /// To be called once. The first of the arguments is the program's path. \param child receives the process's number,
    /// when it is not null. \returns 0, or the `errno` of the start.
    int start(char *const *arguments, char *const *environment, pid_t *child = nullptr) {
        if (m_isDetached) {
            ::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);
        }
        return ::posix_spawn(child, arguments[0], &m_actions, &m_attributes, arguments, environment);
    }
    /// The same with texts.
    int start(std::vector<std::string> arguments, char *const *environment, pid_t *child = nullptr) {
        return start(pointersTo(arguments).data(), environment, child);
    }

    /// Texts as the system wants them. They are the caller's, and stay as long as the pointers are used.
    static std::vector<char *> pointersTo(std::vector<std::string> &texts) {
        std::vector<char *> pointers(texts.size() + 1); // the last one stays null
        std::transform(texts.begin(), texts.end(), pointers.begin(), [](std::string &text) { return text.data(); });
        return pointers;
    }

private:
    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
    bool m_isDetached = false;
};

/// Can be read when a child has ended. Not open when there are too many descriptors.
inline Descriptor endOf(pid_t child) { return Descriptor(::pidfd_open(child, 0)); }

/// Waits for a child's end. \returns its status as `waitpid` gives it; nothing when somebody else has it, or the system
/// does not keep it.
inline std::optional<int> statusAtEnd(pid_t child) {
    int status = 0;
    const pid_t ended = uninterrupted([&] { return ::waitpid(child, &status, 0); });
    return ended == child ? std::optional(status) : std::nullopt;
}

} // namespace quillmark
