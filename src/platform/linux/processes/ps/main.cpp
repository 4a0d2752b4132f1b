/// Lists processes as a Mac does, with their whole names: the system's own list cuts them after 15 bytes, where a core
/// with a longer name would not be found. The launcher's shells find this program first in their search path.
///
///     ps ax -o comm   the names of all processes
///     ps -p NUMBER    the number and the name of one
///
/// Both have a line of headings. A process that has ended counts as gone, also while its parent has not asked for its
/// status yet. What else is asked is the system's to answer. It uses the C library alone: it runs at every start.

#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr size_t kCutAt = 15; // bytes of a name that the process table holds

/// Reads the beginning of a process's file. \returns how much there is; a zero byte is behind it.
size_t readFile(const char *process, const char *file, char *buffer, size_t size) {
    char path[64];
    std::snprintf(path, sizeof path, "/proc/%s/%s", process, file);
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
    size_t length = 0;
    while (descriptor >= 0 && length < size - 1) {
        const ssize_t count = ::read(descriptor, buffer + length, size - 1 - length);
        if (count <= 0) {
            break;
        }
        length += static_cast<size_t>(count);
    }
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    buffer[length] = '\0';
    return length;
}

const char *baseName(const char *path) {
    const char *const slash = std::strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

/// The whole name that the process table has cut: that of the program, or of the script that it was started for. The
/// cut one when neither begins like it: some processes name themselves.
void completeName(const char *process, char *name, size_t size) {
    char arguments[2 * PATH_MAX];
    const size_t length = readFile(process, "cmdline", arguments, sizeof arguments);
    const char *argument = arguments;
    for (int place = 0; place < 2 && argument < arguments + length; ++place) {
        if (std::strncmp(baseName(argument), name, kCutAt) == 0) {
            std::snprintf(name, size, "%s", baseName(argument));
            return;
        }
        argument += std::strlen(argument) + 1;
    }
}

/// Prints a process on a line of its own. \returns false when there is no such process.
bool printProcess(const char *process, bool isNumberShown) {
    char status[512];
    char name[NAME_MAX + 1];
    // NUMBER (NAME) STATE …; a name may hold parentheses and blanks, too.
    readFile(process, "stat", status, sizeof status);
    char *const begin = std::strchr(status, '(');
    char *const end = std::strrchr(status, ')');
    if (begin == nullptr || end == nullptr || end < begin || std::strlen(end) < 3) {
        return false;
    }
    const char state = end[2];
    if (state == 'Z' || state == 'X') {
        return false;
    }
    *end = '\0';
    std::snprintf(name, sizeof name, "%s", begin + 1);
    if (std::strlen(name) == kCutAt) {
        completeName(process, name, sizeof name);
    }
    for (char *character = name; *character != '\0'; ++character) {
        if (std::iscntrl(static_cast<unsigned char>(*character)) != 0) {
            *character = '?'; // one line a process
        }
    }
    if (isNumberShown) {
        std::printf("%7s %s\n", process, name);
    } else {
        std::puts(name);
    }
    return true;
}

bool isNumber(const char *text) { return *text != '\0' && text[std::strspn(text, "0123456789")] == '\0'; }

int listAll() {
    std::puts("COMMAND");
    DIR *const processes = ::opendir("/proc");
    if (processes == nullptr) {
        return EXIT_FAILURE;
    }
    while (const struct dirent *entry = ::readdir(processes)) { // NOLINT(concurrency-mt-unsafe): there is one thread
        if (isNumber(entry->d_name)) {
            printProcess(entry->d_name, false);
        }
    }
    ::closedir(processes);
    return EXIT_SUCCESS;
}

/// The next program of this name in the search path.
int runSystems(char **arguments) {
    char own[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", own, sizeof own - 1);
    const char *folder = std::getenv("PATH"); // NOLINT(concurrency-mt-unsafe)
    own[length > 0 ? length : 0] = '\0';
    while (folder != nullptr && *folder != '\0') {
        const size_t size = std::strcspn(folder, ":");
        char path[PATH_MAX];
        char resolved[PATH_MAX];
        std::snprintf(path, sizeof path, "%.*s/ps", static_cast<int>(size), folder);
        if (::realpath(path, resolved) != nullptr && std::strcmp(resolved, own) != 0) {
            ::execv(path, arguments);
        }
        folder += folder[size] == ':' ? size + 1 : size;
    }
    std::fputs("ps: the system has no such program for what is asked\n", stderr);
    return EXIT_FAILURE;
}

} // namespace

int main(int count, char **arguments) {
    const auto isArgument = [&](int place, const char *text) { return std::strcmp(arguments[place], text) == 0; };
    if (count == 4 && isArgument(1, "ax") && isArgument(2, "-o") && isArgument(3, "comm")) {
        return listAll();
    }
    if (count == 3 && isArgument(1, "-p") && isNumber(arguments[2])) {
        std::puts("    PID COMMAND");
        return printProcess(arguments[2], true) ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    return runSystems(arguments);
}
