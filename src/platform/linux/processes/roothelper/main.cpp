/// The root helper: starts programs as the administrator for the launcher that started it, with the user's leave,
/// through the desktop's password dialog. It serves nobody else, and ends with its launcher.
///
/// It trusts nothing that it is given but what the password was given for: to run what its launcher names.

#include "platform/linux/processes/HelperProtocol.h"
#include "platform/linux/processes/Spawn.h"
#include "platform/process/Surroundings.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using quillmark::Descriptor;
using quillmark::HelperAnswer;

constexpr int kLauncher = STDIN_FILENO;
constexpr std::string_view kWait(quillmark::kHelperWait, sizeof quillmark::kHelperWait);

/// Exit statuses; 0 after the launcher has gone.
constexpr int kNotForUse = 2;      // started by hand, or by somebody who does not speak to it
constexpr int kBadRequest = 3;     // cut, too long, or not as the protocol has it
constexpr int kNoSurroundings = 4; // the system gives it less than it needs

/// The other end is this process's own parent, and keeps messages apart.
bool isLaunchersSocket() {
    int type = 0;
    socklen_t size = sizeof type;
    if (::getsockopt(kLauncher, SOL_SOCKET, SO_TYPE, &type, &size) != 0 || type != SOCK_SEQPACKET) {
        return false;
    }
    ucred peer{};
    size = sizeof peer;
    return ::getsockopt(kLauncher, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.pid == ::getppid();
}

/// What programs say of their troubles goes where the launcher's does, but none of them waits until somebody reads it.
bool takeStandardError(int null) {
    struct stat status {};
    const bool isOpen = ::fstat(STDERR_FILENO, &status) == 0;
    if (isOpen && S_ISREG(status.st_mode)) {
        return true; // nobody waits for a disk
    }
    int error = -1;
    const bool isWritable = (::fcntl(STDERR_FILENO, F_GETFL) & O_ACCMODE) != O_RDONLY;
    if (isOpen && isWritable && (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode))) {
        // Opened again: the launcher's own must not change.
        error = ::open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }
    return ::dup2(error >= 0 ? error : null, STDERR_FILENO) == STDERR_FILENO;
}

/// Nothing of the user's surroundings reaches what runs as the administrator.
bool takeSurroundings() {
    quillmark::leaveSurroundings();
    ::umask(S_IWGRP | S_IWOTH);
    ::prctl(PR_SET_DUMPABLE, 0);
    ::signal(SIGCHLD, [](int) {}); // let through while a program's end is waited for, to interrupt that
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (null < 0 || ::dup2(null, STDOUT_FILENO) < 0 || !takeStandardError(null) || ::chdir("/") != 0) {
        return false;
    }
    return ::close_range(STDERR_FILENO + 1, ~0U, 0) == 0;
}

/// Who sends a message is told with it from now on: the launcher's end may have come into other hands.
bool askForSenders() {
    const int isWanted = 1;
    return ::setsockopt(kLauncher, SOL_SOCKET, SO_PASSCRED, &isWanted, sizeof isWanted) == 0;
}

/// Takes the descriptor of a message, if there is one. \returns false when its sender is not the launcher, and for
/// anything else beside the bytes.
bool takeParts(msghdr &message, Descriptor &output) {
    bool isLaunchers = false;
    for (cmsghdr *part = CMSG_FIRSTHDR(&message); part != nullptr; part = CMSG_NXTHDR(&message, part)) {
        if (part->cmsg_level == SOL_SOCKET && part->cmsg_type == SCM_CREDENTIALS) {
            ucred sender{};
            std::memcpy(&sender, CMSG_DATA(part), sizeof sender);
            isLaunchers = sender.pid == ::getppid();
            continue;
        }
        if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS ||
            part->cmsg_len != CMSG_LEN(sizeof(int)) || output.isOpen()) {
            return false;
        }
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(part), sizeof descriptor);
        output = Descriptor(descriptor);
    }
    return isLaunchers;
}

/// The path and the arguments of a request; nothing when it is not as the protocol has it.
std::optional<std::vector<char *>> textsOf(char *bytes, size_t size) {
    if (size == 0 || bytes[0] != '/' || bytes[size - 1] != '\0') {
        return std::nullopt;
    }
    std::vector<char *> texts;
    for (char *text = bytes; text < bytes + size; text += std::strlen(text) + 1) {
        texts.push_back(text);
    }
    if (texts.size() > quillmark::kHelperMaximumTexts) {
        return std::nullopt;
    }
    texts.push_back(nullptr);
    return texts;
}

HelperAnswer start(const std::vector<char *> &texts, const Descriptor &output) {
    quillmark::Spawn spawn;
    spawn.detach();
    spawn.open(STDIN_FILENO, "/dev/null", O_RDONLY);
    if (output.isOpen()) {
        spawn.duplicate(output.get(), STDOUT_FILENO);
    }
    std::array<char, 64> path{"PATH=/usr/bin:/bin:/usr/sbin:/sbin"};
    std::array<char, 16> language{"LANG=C.UTF-8"};
    std::array<char *, 3> environment{path.data(), language.data(), nullptr};
    return spawn.start(texts.data(), environment.data());
}

/// The status of a program that has ended, as soon as there is one; nothing when the launcher has gone before.
std::optional<HelperAnswer> waitForProgram() {
    sigset_t allButChildsEnd;
    ::sigfillset(&allButChildsEnd);
    ::sigdelset(&allButChildsEnd, SIGCHLD);
    while (true) {
        int status = 0;
        const pid_t program = ::waitpid(-1, &status, WNOHANG);
        if (program != 0) {
            return program > 0 ? status : quillmark::kHelperNoProgram;
        }
        pollfd launcher{kLauncher, 0, 0}; // its going is told unasked
        if (::ppoll(&launcher, 1, nullptr, &allButChildsEnd) > 0) {
            return std::nullopt;
        }
    }
}

bool send(const void *bytes, size_t size) {
    return ::send(kLauncher, bytes, size, MSG_NOSIGNAL) == static_cast<ssize_t>(size);
}

/// Serves the launcher to its end. \returns the exit status.
int serve() {
    std::vector<char> bytes(quillmark::kHelperMaximumRequest);
    while (true) {
        Descriptor output;
        alignas(cmsghdr) std::array<char, 2 * CMSG_SPACE(sizeof(int)) + CMSG_SPACE(sizeof(ucred))> parts{};
        iovec piece{bytes.data(), bytes.size()};
        msghdr message{};
        message.msg_iov = &piece;
        message.msg_iovlen = 1;
        message.msg_control = parts.data();
        message.msg_controllen = parts.size();
        const ssize_t size = quillmark::uninterrupted([&] { return ::recvmsg(kLauncher, &message, MSG_CMSG_CLOEXEC); });
        if (size <= 0) {
            return EXIT_SUCCESS;
        }
        const bool isWhole = (message.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) == 0;
        const bool hasPlainParts = takeParts(message, output);
        const std::string_view request(bytes.data(), static_cast<size_t>(size));
        const bool isWait = request == kWait && !output.isOpen();
        const auto texts = textsOf(bytes.data(), request.size());
        if (!isWhole || !hasPlainParts || (!isWait && !texts)) {
            return kBadRequest;
        }
        const auto answer = isWait ? waitForProgram() : start(*texts, output);
        if (!answer || !send(&*answer, sizeof *answer)) {
            return EXIT_SUCCESS;
        }
    }
}

} // namespace

int main() {
    if (!isLaunchersSocket()) {
        return kNotForUse;
    }
    if (!takeSurroundings() || !askForSenders()) {
        return kNoSurroundings;
    }
    constexpr std::string_view greeting = quillmark::kHelperGreeting;
    return send(greeting.data(), greeting.size()) ? serve() : EXIT_SUCCESS;
}
