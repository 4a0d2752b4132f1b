#include "platform/files/LockFile.h"

#include "platform/Clock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {

namespace {

constexpr mode_t kUsersAlone = S_IRUSR | S_IWUSR;

Descriptor openOwnFile(const std::string &path) {
    Descriptor file(
        ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, kUsersAlone));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0) {
        return {};
    }
    if (!S_ISREG(status.st_mode) || status.st_uid != ::geteuid()) {
        errno = EPERM;
        return {};
    }
    ::fchmod(file.get(), kUsersAlone); // whatever became of it meanwhile
    return file;
}

} // namespace

Descriptor lockedFile(const std::string &path, Clock &clock) {
    constexpr int kAttempts = 1000;
    constexpr std::chrono::milliseconds kPause(10);
    Descriptor file = openOwnFile(path);
    for (int attempt = 0; file.isOpen() && attempt < kAttempts; ++attempt) {
        if (::flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
            return file;
        }
        clock.sleep(kPause);
    }
    errno = file.isOpen() ? EWOULDBLOCK : errno;
    return {};
}

} // namespace quillmark
