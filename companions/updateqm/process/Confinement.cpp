#include "process/Confinement.h"

#include "process/Caller.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace updateqm {

namespace {

constexpr rlim_t kSeconds = 60;
constexpr rlim_t kMemory = rlim_t{1} << 30U; // bytes, on top of what there is

struct Limit {
    __rlimit_resource resource;
    rlim_t value;
};

/// These hold where the system knows no filter of calls, too.
constexpr Limit kLimits[] = {
    {RLIMIT_NOFILE, 0}, {RLIMIT_NPROC, 0}, {RLIMIT_FSIZE, 0}, {RLIMIT_CORE, 0}, {RLIMIT_CPU, kSeconds},
};

/// What memory and the end of a process need, and the writing of results. Everything else is not permitted.
constexpr unsigned kCalls[] = {
    SYS_write,   SYS_brk,    SYS_mmap,      SYS_munmap,        SYS_mremap,         SYS_mprotect,
    SYS_madvise, SYS_futex,  SYS_getrandom, SYS_clock_gettime, SYS_rt_sigprocmask, SYS_rt_sigreturn,
    SYS_getpid,  SYS_gettid, SYS_tgkill,    SYS_exit,          SYS_exit_group,
};

#if defined(__x86_64__)
constexpr unsigned kArchitecture = AUDIT_ARCH_X86_64;
constexpr unsigned kFirstForeignCall = 0x40000000; // of the ABI with 32-bit pointers, whose numbers begin here
#elif defined(__aarch64__)
constexpr unsigned kArchitecture = AUDIT_ARCH_AARCH64;
constexpr unsigned kFirstForeignCall = ~0U;
#else
constexpr unsigned kArchitecture = 0; // not known here: the limits alone hold
constexpr unsigned kFirstForeignCall = 0;
#endif

sock_filter statement(unsigned code, unsigned value) { return {static_cast<__u16>(code), 0, 0, value}; }

/// Leaves out the next \p ifTrue or \p ifFalse statements.
sock_filter jump(unsigned code, unsigned value, size_t ifTrue, size_t ifFalse) {
    return {static_cast<__u16>(BPF_JMP | code | BPF_K), static_cast<__u8>(ifTrue), static_cast<__u8>(ifFalse), value};
}

std::vector<sock_filter> filter() {
    const unsigned load = BPF_LD | BPF_W | BPF_ABS;
    const auto answer = [](unsigned value) { return statement(BPF_RET | BPF_K, value); };
    const size_t count = std::size(kCalls);
    std::vector<sock_filter> program = {
        statement(load, offsetof(seccomp_data, arch)),
        jump(BPF_JEQ, kArchitecture, 1, 0),
        answer(SECCOMP_RET_KILL_PROCESS),
        statement(load, offsetof(seccomp_data, nr)),
        jump(BPF_JGE, kFirstForeignCall, count, 0),
    };
    for (size_t index = 0; index < count; ++index) {
        program.push_back(jump(BPF_JEQ, kCalls[index], count - index, 0));
    }
    program.push_back(answer(SECCOMP_RET_ERRNO | EPERM));
    program.push_back(answer(SECCOMP_RET_ALLOW));
    return program;
}

void limit(__rlimit_resource resource, rlim_t value) {
    rlimit both{};
    ::getrlimit(resource, &both);
    both.rlim_max = both.rlim_cur = std::min(value, both.rlim_max); // the caller may have set a lower one
    if (::setrlimit(resource, &both) != 0) {
        std::abort();
    }
}

/// Bytes of address space that the process has.
rlim_t usedMemory() {
    unsigned long long pages = 0;
    std::FILE *const file = std::fopen("/proc/self/statm", "re");
    if (file == nullptr || std::fscanf(file, "%llu", &pages) != 1) {
        pages = 0;
    }
    if (file != nullptr) {
        std::fclose(file);
    }
    return pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE));
}

} // namespace

int confine(int output) {
    std::setlocale(LC_CTYPE, "C.UTF-8"); // names in archives are of that encoding
    const rlim_t memory = usedMemory() + kMemory;
    Caller::becomeNobodyForGood();
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::prctl(PR_SET_DUMPABLE, 0);

    constexpr int kOnlyOne = 0;
    ::dup2(output, kOnlyOne);
    ::close_range(kOnlyOne + 1, ~0U, 0);
    for (const Limit &each : kLimits) {
        limit(each.resource, each.value);
    }
    limit(RLIMIT_AS, memory);

    std::vector<sock_filter> program = filter();
    const sock_fprog description{static_cast<unsigned short>(program.size()), program.data()};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        std::abort();
    }
    if (kArchitecture != 0) {
        ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &description); // not every kernel has it
    }
    return kOnlyOne;
}

} // namespace updateqm
