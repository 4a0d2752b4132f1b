#include "installcheck/InstallCheckManager.h"
#include "launcher/Quillmark_LauncherAppDelegate.h"
#include "platform/Application.h"
#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "texts/LocalizedStrings.h"
#include "utils/Exception.h"
#include "utils/Log.h"
#include "utils/ProductVersion.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace {

/// EX_CONFIG of sysexits.h: whatever keeps the launcher from starting lies in its configuration or its surroundings.
constexpr int kUnhandledFault = 78;

/// What standard error gets when an assertion fails; made beforehand, since a signal's handler may not.
std::string &assertionMessage() {
    static auto &message = *new std::string;
    return message;
}

/// A failed assertion has written its line and aborts; the user gets a sentence and a status in place of a core dump.
extern "C" void endAfterAssertion(int /*signal*/) {
    const std::string &message = assertionMessage();
    [[maybe_unused]] const ssize_t ignored = ::write(STDERR_FILENO, message.data(), message.size());
    ::_exit(kUnhandledFault);
}

std::string productName() { return quillmark::QMLocalizedString("ProductName"); }

int endAfterFault(const std::string &reason) {
    quillmark::NSPrintErrf("%@: could not start: %@", productName(), reason);
    return kUnhandledFault;
}

/// Answers the two questions that every program answers. Whatever else it is given the launcher passes over, as a
/// desktop may add words of its own.
bool answersQuestion(int count, char **arguments) {
    const auto isAsked = [&](std::string_view option) {
        return std::find(arguments + 1, arguments + std::max(count, 1), option) != arguments + std::max(count, 1);
    };
    if (isAsked("--help")) {
        quillmark::NSPrintf(
            "Usage: %@ [--help] [--version]\n\n"
            "Makes sure that the components of %@ are in order, and starts it. What is not in order it offers "
            "to repair, in a window.\n\n"
            "  --help      show this text\n"
            "  --version   show the version",
            quillmark::platform().systemInfo.processName(), productName());
        return true;
    }
    if (isAsked("--version")) {
        quillmark::NSPrintf("%@ %@", productName(), quillmark::versionOfThisAppAsString(true));
        return true;
    }
    return false;
}

int start(int count, char **arguments) {
    if (answersQuestion(count, arguments)) {
        return EXIT_SUCCESS;
    }
    assertionMessage() = productName() + ": could not start: an internal check failed, see the line above\n";
    std::signal(SIGABRT, endAfterAssertion);
    quillmark::logReportedProblems();
    try {
        quillmark::Quillmark_LauncherAppDelegate delegate(
            quillmark::LocalizedStrings::sharedManager(),
            []() -> quillmark::InstallCheckManager & { return quillmark::InstallCheckManager::sharedManager(); });
        if (delegate.applicationDidFinishLaunching()) {
            quillmark::platform().application.run();
        }
    } catch (const quillmark::Exception &exception) {
        quillmark::logErrorException(exception);
        return endAfterFault(exception.reason());
    } catch (const std::exception &exception) {
        quillmark::logError("%s", exception.what());
        return endAfterFault(exception.what());
    }
    return EXIT_FAILURE; // components are at fault, and the log says which
}

} // namespace

int main(int count, char **arguments) {
    try {
        return start(count, arguments);
    } catch (const std::system_error &error) { // there is not even a log or a product's name
        std::fprintf(stderr, "%s: could not start: %s\n", program_invocation_short_name, error.what());
        return kUnhandledFault;
    }
}
