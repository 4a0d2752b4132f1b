#include "process/Caller.h"

#include "process/Failure.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <grp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace updateqm {

namespace {

constexpr uid_t kNobody = 65534; // the kernel's own name for a user that nobody is

uid_t callingUser = 0;
gid_t callingGroup = 0;
std::vector<gid_t> callingGroups;
bool isForGood = false;

/// A step that must not fail: going on with half of the rights would be worse than ending.
void orAbort(int result) {
    if (result != 0) {
        std::abort();
    }
}

void become(uid_t user, gid_t group, const std::vector<gid_t> &groups, uid_t saved) {
    // The groups first: only the administrator may change them.
    orAbort(::setresuid(0, 0, 0));
    orAbort(::setgroups(groups.size(), groups.data()));
    orAbort(::setresgid(group, group, group));
    orAbort(::setresuid(user, user, saved));
}

} // namespace

void Caller::start() {
    callingUser = ::getuid();
    callingGroup = ::getgid();
    callingGroups.resize(static_cast<size_t>(std::max(::getgroups(0, nullptr), 0)));
    callingGroups.resize(
        static_cast<size_t>(std::max(::getgroups(static_cast<int>(callingGroups.size()), callingGroups.data()), 0)));
    if (::geteuid() != 0 || ::setgroups(callingGroups.size(), callingGroups.data()) != 0) {
        throw Failure(Status::NotAdministrator, "updateqm", "has not got the administrator's rights");
    }
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    ::prctl(PR_SET_DUMPABLE, 0);
    constexpr rlimit kNone{0, 0};
    ::setrlimit(RLIMIT_CORE, &kNone);
    ::umask(S_IWGRP | S_IWOTH);
    must(::chdir("/") == 0, "/");
    becomeCaller();
}

uid_t Caller::user() { return callingUser; }

void Caller::becomeAdministrator() { become(0, 0, {}, 0); }

void Caller::becomeCaller() { become(callingUser, callingGroup, callingGroups, 0); }

void Caller::becomeCallerForGood() {
    become(callingUser, callingGroup, callingGroups, callingUser);
    isForGood = true;
}

void Caller::becomeNobodyForGood() {
    if (!isForGood) {
        become(kNobody, kNobody, {}, kNobody);
    }
}

} // namespace updateqm
