#include "platform/linux/processes/LinuxAuthorization.h"

#include "platform/Bundle.h"
#include "platform/linux/processes/HelperProtocol.h"
#include "platform/linux/processes/PrivateMemory.h"
#include "platform/linux/processes/Spawn.h"
#include "platform/process/Problem.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace quillmark {

namespace {

class OutputPipe final : public CommunicationsPipe {
public:
    explicit OutputPipe(Descriptor reading) : m_reading(std::move(reading)) {}

    std::int64_t read(char *buffer, std::int64_t size) override {
        const ssize_t count = uninterrupted([&] { return ::read(m_reading.get(), buffer, static_cast<size_t>(size)); });
        return std::max<ssize_t>(count, 0);
    }

private:
    Descriptor m_reading;
};

/// The dialog's exit statuses, when the helper was not started.
std::int32_t statusOfDialog(int status) {
    constexpr int kDismissed = 126;
    return WIFEXITED(status) && WEXITSTATUS(status) == kDismissed ? kAuthorizationCanceled : kAuthorizationDenied;
}

/// The arguments that make a program do here what the given ones make it do where they come from: there, cp keeps
/// extended attributes with a file's mode and times, here it has to be told.
std::vector<std::string> withTheSameMeaning(const std::string &path, std::vector<std::string> arguments) {
    if (path == "/bin/cp" && !arguments.empty() && arguments[0] == "-pR") {
        arguments.insert(arguments.begin() + 1, "--preserve=all");
    }
    return arguments;
}

/// Its rights are those of the root helper, which runs from the first question to the end of this object.
class HelperReference final : public Authorization::Reference {
public:
    explicit HelperReference(std::string program) : m_program(std::move(program)) {}
    HelperReference(const HelperReference &) = delete;
    HelperReference &operator=(const HelperReference &) = delete;
    ~HelperReference() override { end(); }

    /// The helper is started even without the flags that ask for it: there is no other way to learn of the right.
    std::int32_t copyRights(std::string_view right, std::uint32_t /*flags*/) override {
        if (right != kAuthorizationRightAdmin) {
            return kAuthorizationDenied;
        }
        return m_process != 0 ? 0 : start();
    }

    std::int32_t executeWithPrivileges(const std::string &path, const std::vector<std::string> &arguments,
                                       std::unique_ptr<CommunicationsPipe> *pipe) override {
        std::string request = path + '\0';
        const std::vector<std::string> texts = withTheSameMeaning(path, arguments);
        for (const std::string &text : texts) {
            request += text + '\0';
        }
        if (m_process == 0 || !path.starts_with('/') ||
            std::count(request.begin(), request.end(), '\0') != std::ssize(texts) + 1 ||
            texts.size() >= kHelperMaximumTexts || request.size() > kHelperMaximumRequest) {
            return kAuthorizationToolExecuteFailure;
        }
        std::array<int, 2> ends{-1, -1};
        if (pipe != nullptr && ::pipe2(ends.data(), O_CLOEXEC) != 0) {
            return kAuthorizationToolExecuteFailure;
        }
        Descriptor reading(ends[0]);
        const Descriptor writing(ends[1]);
        if (answerTo(request, writing.get()) != 0) {
            return kAuthorizationToolExecuteFailure;
        }
        if (pipe != nullptr) {
            *pipe = std::make_unique<OutputPipe>(std::move(reading));
        }
        return 0;
    }

    std::optional<int> waitForChild() override {
        const auto status = m_process != 0 ? answerTo(std::string(kHelperWait, sizeof kHelperWait)) : std::nullopt;
        return status == kHelperNoProgram ? std::nullopt : status;
    }

private:
    /// Waits for as long as the user takes with the password. \returns a status.
    std::int32_t start() {
        std::array<int, 2> ends{};
        if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
            return kAuthorizationDenied;
        }
        m_socket = Descriptor(ends[0]);
        m_privateMemory.emplace(); // whoever has the socket has the administrator's rights
        {
            const Descriptor helpersEnd(ends[1]);
            m_process = spawn(helpersEnd.get());
        }
        if (m_process == 0) {
            return kAuthorizationDenied;
        }
        std::array<char, sizeof kHelperGreeting> greeting{};
        const ssize_t size = receive(greeting.data(), greeting.size());
        const bool isGreeted = size == sizeof kHelperGreeting - 1 &&
                               std::memcmp(greeting.data(), kHelperGreeting, sizeof kHelperGreeting - 1) == 0;
        return isGreeted ? 0 : statusOfDialog(end());
    }

    /// \returns the answer, which may take as long as a program runs; nothing when the helper has ended.
    std::optional<HelperAnswer> answerTo(const std::string &request, int output = -1) {
        std::string bytes = request;
        iovec piece{bytes.data(), bytes.size()};
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> parts{};
        msghdr message{};
        message.msg_iov = &piece;
        message.msg_iovlen = 1;
        if (output >= 0) {
            message.msg_control = parts.data();
            message.msg_controllen = parts.size();
            cmsghdr *const part = CMSG_FIRSTHDR(&message);
            part->cmsg_level = SOL_SOCKET;
            part->cmsg_type = SCM_RIGHTS;
            part->cmsg_len = CMSG_LEN(sizeof output);
            std::memcpy(CMSG_DATA(part), &output, sizeof output);
        }
        HelperAnswer answer = 0;
        if (::sendmsg(m_socket.get(), &message, MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size()) ||
            receive(&answer, sizeof answer) != sizeof answer) {
            return std::nullopt;
        }
        return answer;
    }

    /// \returns the process's number, or 0.
    pid_t spawn(int helpersEnd) {
        std::vector<std::string> arguments{m_program};
        if (::geteuid() != 0) { // a dialog in the terminal would ask there, and wait
            arguments = {"/usr/bin/pkexec", "--disable-internal-agent", m_program};
        }
        Spawn spawn;
        spawn.duplicate(helpersEnd, STDIN_FILENO);
        pid_t process = 0;
        const int error = spawn.start(arguments, environ, &process);
        if (error != 0) {
            reportProblem('"' + arguments[0] + "\" can't be started: " + std::generic_category().message(error));
        }
        return error == 0 ? process : 0;
    }

    ssize_t receive(void *buffer, size_t size) {
        return uninterrupted([&] { return ::recv(m_socket.get(), buffer, size, 0); });
    }

    /// \returns the status as waitpid gives it.
    int end() {
        m_socket.close(); // it ends then; it can't be signalled
        m_privateMemory.reset();
        const pid_t process = std::exchange(m_process, 0);
        return process != 0 ? statusAtEnd(process).value_or(0) : 0;
    }

    std::string m_program;
    Descriptor m_socket;
    std::optional<PrivateMemory> m_privateMemory; // as long as the socket is open
    pid_t m_process = 0;
};

} // namespace

std::int32_t LinuxAuthorization::create(std::unique_ptr<Reference> &reference) {
    reference = std::make_unique<HelperReference>(helpersFolder(m_bundle.path()) + "/quillmark-root-helper");
    return 0;
}

} // namespace quillmark
