/* The least that a start needs when nothing is to be repaired: it reads the bytes of the property lists, writes the
   log's lines, asks the process table three times, lists the two Applications folders, asks the helper tools for their
   versions, starts the core in a session of its own, and ends. With a bundle and the tools as its arguments it does all
   of that; without, it only asks the process table. */

#define _GNU_SOURCE
#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static char path[4096];
static char bytes[1 << 16];

static void readFile(const char *folder, const char *name) {
    snprintf(path, sizeof path, "%s/%s", folder, name);
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return;
    while (read(file, bytes, sizeof bytes) > 0) {
    }
    close(file);
}

static void listFolder(const char *folder) {
    DIR *directory = opendir(folder);
    while (directory != NULL && readdir(directory) != NULL) {
    }
    if (directory != NULL)
        closedir(directory);
}

static FILE *openLog(const char *home) {
    static const char *const folders[] = {"Library", "Library/Logs", "Library/Logs/Quillmark",
                                          "Library/Logs/Quillmark/Quillmark"};
    for (size_t i = 0; i < sizeof folders / sizeof *folders; ++i) {
        snprintf(path, sizeof path, "%s/%s", home, folders[i]);
        mkdir(path, 0777);
    }
    snprintf(path, sizeof path, "%s/%s/Quillmark-floor.log", home, folders[3]);
    return fopen(path, "a");
}

static void writeLine(FILE *log, const char *text) {
    struct timespec time;
    struct tm local;
    char stamp[32];
    clock_gettime(CLOCK_REALTIME, &time);
    localtime_r(&time.tv_sec, &local);
    strftime(stamp, sizeof stamp, "%F %T", &local);
    fprintf(log, "%s.%04ld Quillmark[%d] (nrm) [0x%x] %s\n", stamp, time.tv_nsec / 100000, getpid(), (unsigned)gettid(),
            text);
}

static void askProcessTable(void) {
    static const char *const pipelines[] = {
        "ps ax -o comm | fgrep 'QuillmarkCore' | grep -v grep | grep -v relaunchqm > /dev/null",
        "ps ax -o comm | grep 'Quillmark Mac' | grep -v grep >/dev/null",
        "ps ax -o comm | grep 'QuillmarkCore' | grep -v grep >/dev/null"};
    for (size_t i = 0; i < sizeof pipelines / sizeof *pipelines; ++i) {
        char *arguments[] = {"/bin/sh", "-c", (char *)pipelines[i], NULL};
        pid_t child;
        if (posix_spawn(&child, arguments[0], NULL, NULL, arguments, environ) == 0)
            waitpid(child, NULL, 0);
    }
}

static void askTool(const char *tool) {
    struct stat status;
    stat(tool, &status);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    char *arguments[] = {(char *)tool, NULL};
    pid_t child;
    if (posix_spawn(&child, tool, &actions, NULL, arguments, environ) == 0) {
        close(ends[1]);
        while (read(ends[0], bytes, sizeof bytes) > 0) {
        }
        waitpid(child, NULL, 0);
    }
    close(ends[0]);
}

static int startCore(const char *bundle) {
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    snprintf(path, sizeof path, "%s/Contents/Resources/QuillmarkCore.app/Contents/MacOS/QuillmarkCore", bundle);
    char *arguments[] = {path, NULL};
    pid_t child;
    return posix_spawn(&child, path, NULL, &attributes, arguments, environ);
}

int main(int count, char **arguments) {
    const char *home = getenv("HOME");
    if (count == 1) {
        askProcessTable();
        return 0;
    }
    if (home == NULL)
        return 2;
    readFile(arguments[1], "Contents/Info.plist");
    readFile(arguments[1], "Contents/Resources/en.lproj/Localizable.strings");
    readFile(arguments[1], "Contents/Resources/Config.plist");
    readFile(arguments[1], "Contents/Resources/Defaults.plist");
    readFile(arguments[1], "Contents/Resources/RequiredItems.plist");
    readFile(home, "Library/Preferences/com.quillmark.QuillmarkLauncher.plist");
    FILE *log = openLog(home);
    if (log == NULL)
        return 1;
    writeLine(log, "Quillmark version 1.14.4.1303");
    writeLine(log, "Quillmark did begin launching...");
    askProcessTable();
    snprintf(path, sizeof path, "%s/Applications", home);
    listFolder(path);
    listFolder("/Applications");
    writeLine(log, "Quillmark did finish launching");
    for (int tool = 2; tool < count; ++tool)
        askTool(arguments[tool]);
    writeLine(log, "Launching \"QuillmarkCore\"...");
    const int error = startCore(arguments[1]);
    writeLine(log, "Launched \"QuillmarkCore\"");
    writeLine(log, "Will terminate now");
    return fclose(log) == 0 && error == 0 ? 0 : 1;
}
