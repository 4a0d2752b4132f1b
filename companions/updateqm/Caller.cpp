#include "Caller.h"

#include "Failure.h"

#include <csignal>
#include <cstdlib>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace updateqm {

namespace {

uid_t callingUser = 0;
gid_t callingGroup = 0;
std::vector<gid_t> callingGroups;

/// A step that must not fail: going on with half of the rights would be worse than ending.
void must(int result) {
    if (result != 0) {
        std::abort();
    }
}

} // namespace

void Caller::start() {
    callingUser = ::getuid();
    callingGroup = ::getgid();
    callingGroups.resize(static_cast<size_t>(std::max(::getgroups(0, nullptr), 0)));
    callingGroups.resize(
        static_cast<size_t>(std::max(::getgroups(static_cast<int>(callingGroups.size()), callingGroups.data()), 0)));
    if (::geteuid() != 0 || ::setgroups(0, nullptr) != 0 || ::setresgid(0, 0, 0) != 0 || ::setresuid(0, 0, 0) != 0) {
        throw Failure(Status::NotAdministrator, "updateqm", "has not got the administrator's rights");
    }
    ::umask(S_IWGRP | S_IWOTH);
    // Somebody at the keyboard does not end it half-way.
    for (const int signal : {SIGINT, SIGQUIT, SIGTSTP, SIGHUP, SIGPIPE, SIGXFSZ}) {
        ::signal(signal, SIG_IGN);
    }
}

uid_t Caller::user() { return callingUser; }

Caller::Rights::Rights() {
    must(::setgroups(callingGroups.size(), callingGroups.data()));
    must(::setegid(callingGroup));
    must(::seteuid(callingUser));
}

Caller::Rights::~Rights() {
    must(::seteuid(0));
    must(::setegid(0));
    must(::setgroups(0, nullptr));
}

} // namespace updateqm
