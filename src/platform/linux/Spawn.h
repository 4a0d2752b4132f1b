#pragma once

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

namespace quillmark {

/// The start of a program that has nothing in common with this process: a session of its own, no blocked or ignored
/// signal, no descriptor but the standard streams, which the caller sees to.
class DetachedSpawn {
public:
    DetachedSpawn()
        : m_hasActions(::posix_spawn_file_actions_init(&m_actions) == 0),
          m_hasAttributes(::posix_spawnattr_init(&m_attributes) == 0) {
        if (m_hasAttributes) {
            sigset_t none;
            sigset_t all;
            ::sigemptyset(&none);
            ::sigfillset(&all);
            ::posix_spawnattr_setsigmask(&m_attributes, &none);
            ::posix_spawnattr_setsigdefault(&m_attributes, &all);
            ::posix_spawnattr_setflags(&m_attributes,
                                       POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        }
    }
    DetachedSpawn(const DetachedSpawn &) = delete;
    DetachedSpawn &operator=(const DetachedSpawn &) = delete;
    ~DetachedSpawn() {
        if (m_hasActions) {
            ::posix_spawn_file_actions_destroy(&m_actions);
        }
        if (m_hasAttributes) {
            ::posix_spawnattr_destroy(&m_attributes);
        }
    }

    /// Gives the program a file as one of its standard streams.
    void open(int stream, const char *path, int flags) {
        if (m_hasActions) {
            ::posix_spawn_file_actions_addopen(&m_actions, stream, path, flags, 0);
        }
    }
    /// Gives it an open descriptor as one of them.
    void duplicate(int descriptor, int stream) {
        if (m_hasActions) {
            ::posix_spawn_file_actions_adddup2(&m_actions, descriptor, stream);
        }
    }
    /// Gives it none of this process's streams, and a current folder that keeps no volume busy.
    void separate() {
        open(STDIN_FILENO, "/dev/null", O_RDONLY);
        open(STDOUT_FILENO, "/dev/null", O_WRONLY);
        open(STDERR_FILENO, "/dev/null", O_WRONLY);
        if (m_hasActions) {
            ::posix_spawn_file_actions_addchdir_np(&m_actions, "/");
        }
    }

    /// To be called once. \returns 0, or the `errno` of the start.
    int start(const char *program, char *const *arguments, char *const *environment) {
        if (!m_hasActions || !m_hasAttributes) {
            return ENOMEM;
        }
        ::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);
        pid_t child = 0;
        return ::posix_spawn(&child, program, &m_actions, &m_attributes, arguments, environment);
    }

private:
    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
    const bool m_hasActions;
    const bool m_hasAttributes;
};

} // namespace quillmark
