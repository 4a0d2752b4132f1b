/* Runs a program once and prints how long it took, in nanoseconds, its largest resident size, in kilobytes, and how
   many cores it left behind. It stays until these have ended as well, so that the next run sees none of them.

   This program must be small: the system counts what the parent had at the moment of the start as the child's. */

#define _GNU_SOURCE
#include "core_that_ends.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static long long now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1000000000LL + time.tv_nsec;
}

/* Waits for what the program has left behind, which becomes ours when the program ends. */
static int coresLeftBehind(void) {
    int cores = 0;
    int status = 0;
    while (wait(&status) > 0)
        cores += WIFEXITED(status) && WEXITSTATUS(status) == CORE_STATUS;
    return cores;
}

int main(int count, char **arguments) {
    if (count < 2)
        return 2;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);

    prctl(PR_SET_CHILD_SUBREAPER, 1);

    pid_t child;
    int status = 0;
    struct rusage usage;
    const long long start = now();
    if (posix_spawn(&child, arguments[1], &actions, NULL, arguments + 1, environ) != 0 ||
        wait4(child, &status, 0, &usage) != child)
        return 1;
    const long long time = now() - start;
    printf("%lld %ld %d\n", time, usage.ru_maxrss, coresLeftBehind());
    return status == 0 ? 0 : 1;
}
