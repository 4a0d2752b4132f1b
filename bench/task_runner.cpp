// Running a program and taking its output: the task runner beside a bare posix_spawn with one pipe a stream.

#include "tools/Task+OneLineTasksWithOutput.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

using namespace quillmark;

namespace {

const char *const kShort = "/bin/true";
const char *const kLong = "head -c 100000000 /dev/zero | tr '\\0' x";

/// Reads both pipes until both are closed. \returns the bytes read from the first.
size_t drain(std::array<pollfd, 2> pipes) {
    static std::array<char, 1 << 16> piece;
    std::string text;
    int open = 2;
    while (open > 0) {
        ::poll(pipes.data(), pipes.size(), -1);
        for (pollfd &pipe : pipes) {
            if (pipe.fd < 0 || pipe.revents == 0) {
                continue;
            }
            const ssize_t count = ::read(pipe.fd, piece.data(), piece.size());
            if (count <= 0) {
                pipe.fd = -1;
                --open;
            } else if (&pipe == pipes.data()) {
                text.append(piece.data(), static_cast<size_t>(count));
            }
        }
    }
    return text.size();
}

size_t bareRun(std::array<const char *, 4> arguments) {
    int output[2];
    int error[2];
    if (::pipe2(output, O_CLOEXEC) != 0 || ::pipe2(error, O_CLOEXEC) != 0) {
        std::abort();
    }
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, error[1], STDERR_FILENO);
    pid_t child = 0;
    ::posix_spawn(&child, arguments[0], &actions, nullptr, const_cast<char **>(arguments.data()), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(output[1]);
    ::close(error[1]);
    const size_t bytes = drain({pollfd{output[0], POLLIN, 0}, pollfd{error[0], POLLIN, 0}});
    ::close(output[0]);
    ::close(error[0]);
    ::waitpid(child, nullptr, 0);
    return bytes;
}

void shortBare(benchmark::State &state) {
    for ([[maybe_unused]] auto run : state) {
        bareRun({kShort, nullptr});
    }
}

void shortOurs(benchmark::State &state) {
    for ([[maybe_unused]] auto run : state) {
        stringByLaunchingPath(kShort, {}, {}, nullptr);
    }
}

void longBare(benchmark::State &state) {
    for ([[maybe_unused]] auto run : state) {
        benchmark::DoNotOptimize(bareRun({"/bin/sh", "-c", kLong, nullptr}));
    }
}

void longOurs(benchmark::State &state) {
    for ([[maybe_unused]] auto run : state) {
        const std::optional<std::string> output = stringByLaunchingPath("/bin/sh", {"-c", kLong}, {}, nullptr);
        benchmark::DoNotOptimize(output->size());
    }
}

} // namespace

BENCHMARK(shortBare)->Name("short run/floor")->UseRealTime();
BENCHMARK(shortOurs)->Name("short run/ours")->UseRealTime();
BENCHMARK(longBare)->Name("100 MB/floor")->UseRealTime()->Iterations(1);
BENCHMARK(longOurs)->Name("100 MB/ours")->UseRealTime()->Iterations(1);

BENCHMARK_MAIN();
