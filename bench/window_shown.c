/* Runs a program until a window of it is on the screen, and prints how long that took, in nanoseconds, and how large
   the program's resident size was at its largest until then, in kilobytes. Then it kills the program and all its
   children, and waits until they are gone. The display is an X server that nothing else uses. */

#define _GNU_SOURCE
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <xcb/xcb.h>

enum { SMALLEST_WINDOW = 200, PATIENCE = 20 /* s */ };

static long long now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1000000000LL + time.tv_nsec;
}

static void waitForWindow(xcb_connection_t *display) {
    xcb_generic_event_t *event;
    while ((event = xcb_wait_for_event(display)) != NULL) {
        if ((event->response_type & 0x7f) == XCB_MAP_NOTIFY) {
            const xcb_window_t window = ((const xcb_map_notify_event_t *)event)->window;
            xcb_get_geometry_reply_t *geometry =
                xcb_get_geometry_reply(display, xcb_get_geometry(display, window), NULL);
            const int isWindow = geometry != NULL && geometry->width >= SMALLEST_WINDOW;
            free(geometry);
            if (isWindow) {
                free(event);
                return;
            }
        }
        free(event);
    }
    fputs("bench_window_shown: the display is gone\n", stderr);
    exit(1);
}

static long largestSize(pid_t process) {
    char line[256];
    long size = 0;
    snprintf(line, sizeof line, "/proc/%d/status", process);
    FILE *status = fopen(line, "r");
    while (status != NULL && fgets(line, sizeof line, status) != NULL)
        sscanf(line, "VmHWM: %ld", &size);
    if (status != NULL)
        fclose(status);
    return size;
}

int main(int count, char **arguments) {
    if (count < 2)
        return 2;
    xcb_connection_t *display = xcb_connect(NULL, NULL);
    if (xcb_connection_has_error(display) != 0)
        return 1;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(display)).data->root;
    const uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    free(xcb_get_input_focus_reply(display, xcb_get_input_focus(display), NULL));
    xcb_change_window_attributes(display, root, XCB_CW_EVENT_MASK, &events);
    free(xcb_get_input_focus_reply(display, xcb_get_input_focus(display), NULL)); /* the server has done it */

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    alarm(PATIENCE);
    pid_t child;
    const long long start = now();
    if (posix_spawn(&child, arguments[1], &actions, NULL, arguments + 1, environ) != 0)
        return 1;
    waitForWindow(display);
    const long long time = now() - start;
    printf("%lld %ld\n", time, largestSize(child));
    kill(child, SIGKILL);
    while (wait(NULL) > 0) {
    }
    return 0;
}
