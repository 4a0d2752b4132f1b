#include "launcher/windows/Display.h"

#include <QApplication>
#include <array>
#include <clocale>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillmark {

namespace {

/// How long a display may take to answer. A remote one needs a second at worst.
constexpr int kPatience = 15'000; // ms

/// Qt keeps both by reference for as long as the application lives.
std::array<char, sizeof("Quillmark")> programName{"Quillmark"};
std::array<char *, 2> arguments{programName.data(), nullptr};
int argumentCount = 1;

/// In the child: makes an application and tells that it could.
[[noreturn]] void tryDisplay(int answer) {
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    std::signal(SIGABRT, SIG_DFL);
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
    qunsetenv("SESSION_MANAGER"); // this application is not worth announcing
    const QGuiApplication application(argumentCount, arguments.data());
    const ssize_t written = ::write(answer, "+", 1);
    ::_exit(written == 1 ? 0 : 1);
}

/// Whether an application can be made. Qt aborts the process when it reaches no display, finds no plugin for it or
/// can't load one, and there is no way to ask beforehand; so a copy of the process tries it first.
bool displayAnswers() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return false;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        tryDisplay(ends[1]);
    }
    ::close(ends[1]);
    char answer = 0;
    if (child > 0) {
        pollfd readable{ends[0], POLLIN, 0};
        while (::poll(&readable, 1, kPatience) < 0 && errno == EINTR) {
        }
        // An end of file is the child's failure; without either, it is still waiting for the display.
        if (readable.revents == 0 || ::read(ends[0], &answer, 1) != 1) {
            answer = 0;
        }
        ::kill(child, SIGKILL); // nothing is left for it to do
        while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    ::close(ends[0]);
    return answer == '+';
}

bool hasDisplayName() {
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

} // namespace

bool openDisplay(QString &obstacle) {
    if (QCoreApplication *existing = QCoreApplication::instance(); existing != nullptr) {
        obstacle = QStringLiteral("the process has an application without windows");
        return qobject_cast<QApplication *>(existing) != nullptr;
    }
    if (!hasDisplayName()) {
        obstacle = QStringLiteral("there is no display");
        return false;
    }
    if (!displayAnswers()) {
        obstacle = QStringLiteral("the display can't be reached");
        return false;
    }
    static const auto *const application = new QApplication(argumentCount, arguments.data());
    Q_UNUSED(application)
    QApplication::setQuitOnLastWindowClosed(false); // the start-up goes on behind an alert
    std::setlocale(LC_NUMERIC, "C");                // Qt took over the user's, and files need their decimal points
    return true;
}

} // namespace quillmark
