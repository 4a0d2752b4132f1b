/// Stand-in for the core application: it says in its own log that it runs, and stays until it is asked to quit.
///
/// It changes as little as it can of what its starter gave it (signal mask, ignored signals, descriptors, session), so
/// that whoever looks at the running process sees the launcher's work.

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <system_error>
#include <unistd.h>

namespace {

volatile std::sig_atomic_t quitSignal = 0;

void askToQuit(int signal) { quitSignal = signal; }

/// A log that can't be opened does not stop it: every line is then dropped.
std::ofstream openLog() {
    const char *home = std::getenv("HOME");
    const auto folder = std::filesystem::path(home ? home : "/") / "Library/Logs/Quillmark/QuillmarkCore";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    return std::ofstream(folder / "QuillmarkCore.log", std::ios::app);
}

void writeLine(std::ofstream &log, const std::string &message) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char stamp[sizeof "2000-01-01 00:00:00"];
    if (std::strftime(stamp, sizeof stamp, "%F %T", &local) == 0)
        stamp[0] = '\0';
    // One write a line, so that the lines of two cores never mix.
    log << std::string(stamp) + " QuillmarkCore[" + std::to_string(getpid()) + "] " + message + "\n" << std::flush;
}

} // namespace

int main() {
    // Held back until sigsuspend below waits for them, so that none is lost in between.
    sigset_t quitSignals;
    sigset_t given;
    sigemptyset(&quitSignals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&quitSignals, signal);
    sigprocmask(SIG_BLOCK, &quitSignals, &given);

    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN) // stays ignored, as under nohup
            continue;
        action.sa_handler = askToQuit;
        sigaction(signal, &action, nullptr);
    }

    std::ofstream log = openLog();
    writeLine(log, "running");
    while (quitSignal == 0)
        sigsuspend(&given);
    writeLine(log, "quits on signal " + std::to_string(quitSignal));
    return 0;
}
