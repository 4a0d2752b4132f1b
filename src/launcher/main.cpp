#include "branding/LocalizedStrings.h"
#include "installcheck/InstallCheckManager.h"
#include "launcher/Quillmark_LauncherAppDelegate.h"
#include "platform/Application.h"
#include "platform/Platform.h"
#include "utils/Exception.h"
#include "utils/Log.h"

#include <csignal>
#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace {

/// EX_CONFIG of sysexits.h: whatever keeps the launcher from starting lies in its configuration or its surroundings.
constexpr int kUnhandledFault = 78;

/// A failed assertion has written its line and aborts; the user gets a sentence and a status in place of a core dump.
extern "C" void endAfterAssertion(int /*signal*/) {
    constexpr std::string_view kMessage = "Quillmark: could not start: an internal check failed, see the line above\n";
    [[maybe_unused]] const ssize_t ignored = ::write(STDERR_FILENO, kMessage.data(), kMessage.size());
    ::_exit(kUnhandledFault);
}

int endAfterFault(const QString &reason) {
    quillmark::NSPrintErrf("Quillmark: could not start: %@", reason);
    return kUnhandledFault;
}

} // namespace

int main() {
    std::signal(SIGABRT, endAfterAssertion);
    quillmark::logReportedProblems();
    try {
        quillmark::Quillmark_LauncherAppDelegate delegate(
            quillmark::platform(), quillmark::LocalizedStrings::sharedManager(),
            []() -> quillmark::InstallCheckManager & { return quillmark::InstallCheckManager::sharedManager(); });
        if (delegate.applicationDidFinishLaunching()) {
            quillmark::platform().application.run();
        }
    } catch (const quillmark::Exception &exception) {
        quillmark::logErrorException(exception);
        return endAfterFault(exception.reason());
    } catch (const std::exception &exception) {
        quillmark::logError("%s", exception.what());
        return endAfterFault(QString::fromLocal8Bit(exception.what()));
    }
    return EXIT_FAILURE; // components are at fault, and the log says which
}
