/* Preloaded into a program: makes its n-th call of one function on one file fail, once.
 *
 * QUILLMARK_FAIL_CALL   openat, fstat or read
 * QUILLMARK_FAIL_FILE   the file's name; an openat on any path that ends with it counts, and what is done with what it gave
 * QUILLMARK_FAIL_AT     which call, from 1
 * QUILLMARK_FAIL_ERRNO  what it fails with
 *
 * That it has failed is told by a line in the file QUILLMARK_FAIL_TOLD, so that a test knows when it has seen all calls. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

static int descriptor = -1;

static int is_to_fail(const char *call) {
    static int calls;
    const char *wanted = getenv("QUILLMARK_FAIL_CALL");
    if (wanted == NULL || strcmp(wanted, call) != 0 || ++calls != atoi(getenv("QUILLMARK_FAIL_AT"))) {
        return 0;
    }
    const int told = open(getenv("QUILLMARK_FAIL_TOLD"), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (told >= 0) {
        close(told);
    }
    errno = atoi(getenv("QUILLMARK_FAIL_ERRNO"));
    return 1;
}

int openat(int folder, const char *path, int flags, ...) {
    int (*next)(int, const char *, int, ...) = (int (*)(int, const char *, int, ...))dlsym(RTLD_NEXT, "openat");
    mode_t mode = 0;
    if ((flags & (O_CREAT | O_TMPFILE)) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    const char *name = getenv("QUILLMARK_FAIL_FILE");
    const size_t length = strlen(path);
    if (name == NULL || length < strlen(name) || strcmp(path + length - strlen(name), name) != 0) {
        return next(folder, path, flags, mode);
    }
    if (is_to_fail("openat")) {
        return -1;
    }
    descriptor = next(folder, path, flags, mode);
    return descriptor;
}

int fstat(int file, struct stat *attributes) {
    int (*next)(int, struct stat *) = (int (*)(int, struct stat *))dlsym(RTLD_NEXT, "fstat");
    return file >= 0 && file == descriptor && is_to_fail("fstat") ? -1 : next(file, attributes);
}

ssize_t read(int file, void *buffer, size_t size) {
    ssize_t (*next)(int, void *, size_t) = (ssize_t(*)(int, void *, size_t))dlsym(RTLD_NEXT, "read");
    return file >= 0 && file == descriptor && is_to_fail("read") ? -1 : next(file, buffer, size);
}
