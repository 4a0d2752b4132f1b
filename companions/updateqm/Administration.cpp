#include "Administration.h"

#include "InstallPlaces.h"
#include "platform/process/Surroundings.h"
#include "process/Caller.h"
#include "process/Failure.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace updateqm {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPatience = std::chrono::seconds(20);
constexpr auto kInterval = std::chrono::milliseconds(20);

} // namespace

Administration::Administration() {
    // Nobody at the keyboard stops or ends it while it has the lock.
    sigset_t all;
    sigfillset(&all);
    ::sigprocmask(SIG_BLOCK, &all, nullptr);

    const auto end = Clock::now() + kPatience;
    while (true) {
        // It waits as the caller's, who can end it, and for whom it counts; it takes the lock as the administrator's,
        // so that nobody stops it with the lock in its hands.
        Caller::becomeAdministrator();
        if (!m_lock.isOpen()) {
            m_lock = quillmark::Descriptor(
                ::open(kLockFile.data(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
            must(m_lock.isOpen(), std::string(kLockFile));
        }
        if (::flock(m_lock.get(), LOCK_EX | LOCK_NB) == 0) {
            break;
        }
        Caller::becomeCaller();
        if (Clock::now() > end) {
            throw Failure(Status::Busy, "updateqm", "another one is at work");
        }
        std::this_thread::sleep_for(kInterval);
    }
    quillmark::leaveSurroundings();
    constexpr rlim_t kFiles = 32; // with fewer it could stop half-way, and not even tidy up
    rlimit files{};
    ::getrlimit(RLIMIT_NOFILE, &files);
    if (files.rlim_cur < kFiles) {
        throw Failure(Status::CannotWrite, "updateqm", "may not open enough files");
    }
    quillmark::giveUpCapabilities();
}

} // namespace updateqm
