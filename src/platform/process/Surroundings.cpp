#include "platform/process/Surroundings.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace quillmark {

namespace {

constexpr int kTimers[] = {ITIMER_REAL, ITIMER_VIRTUAL, ITIMER_PROF};

constexpr rlim_t kFiles = 256;
constexpr rlim_t kStack = rlim_t{8} << 20U; // bytes

struct Limit {
    __rlimit_resource resource;
    rlim_t value;
};

constexpr Limit kLimits[] = {
    {RLIMIT_CPU, RLIM_INFINITY},   {RLIMIT_FSIZE, RLIM_INFINITY}, {RLIMIT_NOFILE, kFiles},
    {RLIMIT_AS, RLIM_INFINITY},    {RLIMIT_DATA, RLIM_INFINITY},  {RLIMIT_STACK, kStack},
    {RLIMIT_NPROC, RLIM_INFINITY}, {RLIMIT_RSS, RLIM_INFINITY},   {RLIMIT_CORE, 0},
};

/// Files of the system through which somebody else may have a hold on this process.
struct Setting {
    const char *file;
    std::string_view value;
};

constexpr Setting kSettings[] = {
    {"/sys/fs/cgroup/cgroup.procs", "0"},         // leaves the caller's group, which he can freeze
    {"/sys/fs/cgroup/freezer/cgroup.procs", "0"}, // the same on older systems
    {"/proc/self/oom_score_adj", "0"},            // is not the first to be ended when memory is short
};

constexpr unsigned kCapabilities[] = {
    CAP_CHOWN, CAP_DAC_OVERRIDE, CAP_FOWNER, CAP_FSETID, CAP_SETUID, CAP_SETGID,
};

} // namespace

void leaveSurroundings() {
    sigset_t all;
    sigfillset(&all);
    ::sigprocmask(SIG_BLOCK, &all, nullptr);
    ::signal(SIGCHLD, SIG_DFL); // or children could not be waited for

    constexpr itimerval kNever{};
    for (const int timer : kTimers) {
        ::setitimer(static_cast<__itimer_which>(timer), &kNever, nullptr);
    }
    for (const Limit &limit : kLimits) {
        const rlimit both{limit.value, limit.value};
        if (::setrlimit(limit.resource, &both) != 0) { // no right to raise the hard limit
            rlimit inherited{};
            ::getrlimit(limit.resource, &inherited);
            inherited.rlim_cur = inherited.rlim_max;
            ::setrlimit(limit.resource, &inherited);
        }
    }

    constexpr sched_param kOrdinary{};
    ::sched_setscheduler(0, SCHED_OTHER, &kOrdinary);
    ::setpriority(PRIO_PROCESS, 0, 0);
    constexpr int kWhoProcess = 1; // of linux/ioprio.h, which older systems have not
    ::syscall(SYS_ioprio_set, kWhoProcess, 0, 0);
    cpu_set_t processors;
    CPU_ZERO(&processors);
    for (int processor = 0; processor < CPU_SETSIZE; ++processor) {
        CPU_SET(static_cast<size_t>(processor), &processors);
    }
    ::sched_setaffinity(0, sizeof processors, &processors);

    for (const Setting &setting : kSettings) {
        const int file = ::open(setting.file, O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
        if (file >= 0) {
            [[maybe_unused]] const ssize_t count = ::write(file, setting.value.data(), setting.value.size());
            ::close(file);
        }
    }
}

void giveUpCapabilities() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3]{};
    for (const unsigned capability : kCapabilities) {
        const __u32 bit = CAP_TO_MASK(capability);
        sets[CAP_TO_INDEX(capability)].permitted |= bit;
        sets[CAP_TO_INDEX(capability)].effective |= bit;
    }
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || ::syscall(SYS_capset, &header, sets) != 0) {
        std::abort();
    }
}

} // namespace quillmark
