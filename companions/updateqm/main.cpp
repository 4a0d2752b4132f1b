/// The update tool: changes what only the administrator may, for the launcher that an ordinary user runs. It is
/// installed with the set-user-ID bit, so whoever calls it is not to be trusted: what it installs is what the vendor
/// signed, where the catalogue has it.

#include "Bundles.h"
#include "InstallPlaces.h"
#include "Permissions.h"
#include "ToolIdentity.h"
#include "Tools.h"
#include "process/Caller.h"
#include "process/Failure.h"
#include "utils/Log.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <poll.h>
#include <span>
#include <string>
#include <unistd.h>
#include <vector>

QUILLMARK_TOOL_IDENTITY("updateqm", QUILLMARK_TOOL_VERSION)

namespace updateqm {

namespace {

using Arguments = std::span<const std::string>;

constexpr unsigned kProgramMode = 0755;
constexpr unsigned kRootToolMode = 04755;

struct Command {
    std::string_view word;
    size_t argumentCount;
    void (*run)(Arguments arguments);
};

constexpr Command kCommands[] = {
    {"repair", 1, [](Arguments a) { installItself(a[0]); }},
    {"repairpermissions", 0, [](Arguments) { repairAllTools(); }},
    {"repaircore", 1, [](Arguments a) { repairCoreApplication(a[0]); }},
    {"repairother", 2, [](Arguments a) { installTool(a[0], a[1], kProgramMode); }},
    {"repairotherroot", 2, [](Arguments a) { installTool(a[0], a[1], kRootToolMode); }},
    {"repairpermissionsother", 1, [](Arguments a) { repairTool(a[0], kProgramMode); }},
    {"repairpermissionsotherroot", 1, [](Arguments a) { repairTool(a[0], kRootToolMode); }},
    {"repairpackage", 1, [](Arguments a) { installPackage(a[0]); }},
    {"repairzipitem", 3, [](Arguments a) { installArchive(a[0], a[1], a[2]); }},
    {"repairintel10_5", 2, [](Arguments a) { installSystemFixes(a[0], a[1]); }},
    {"applyfullupdate", 3, [](Arguments a) { installClient(a[0], a[1], a[2]); }},
    {"fixmonokeypairs", 1, [](Arguments a) { repairKeyPairs(a[0]); }},
};

void run(const std::vector<std::string> &arguments) {
    const auto *const command =
        std::find_if(std::begin(kCommands), std::end(kCommands),
                     [&arguments](const Command &candidate) { return candidate.word == arguments[0]; });
    if (command == std::end(kCommands)) {
        throw Failure(Status::WrongCommandLine, arguments[0], "there is no such command");
    }
    if (arguments.size() - 1 != command->argumentCount) {
        throw Failure(Status::WrongCommandLine, arguments[0],
                      "takes " + std::to_string(command->argumentCount) + " argument(s)");
    }
    Caller::start();
    command->run(Arguments(arguments).subspan(1));
}

int tell(const std::string &message, Status status) {
    std::string line = "updateqm: " + message;
    std::replace_if(
        line.begin(), line.end(), [](char character) { return static_cast<unsigned char>(character) < ' '; }, '?');
    line.resize(std::min<size_t>(line.size(), PIPE_BUF - 1)); // a pipe takes no more at once
    line += '\n';
    // Nobody reads perhaps, and waiting for that would keep a process of the administrator's for ever.
    pollfd writable{STDERR_FILENO, POLLOUT, 0};
    if (::poll(&writable, 1, 0) == 1 && (writable.revents & POLLOUT) != 0) {
        [[maybe_unused]] const ssize_t count = ::write(STDERR_FILENO, line.data(), line.size());
    }
    return static_cast<int>(status);
}

/// Takes the environment away before any library can look at it: these run before the initialisers of all libraries.
void dropEnvironment(int /*count*/, char ** /*arguments*/, char **environment) { *environment = nullptr; }

[[gnu::used, gnu::retain, gnu::section(".preinit_array")]] void (*const beforeEverything)(int, char **,
                                                                                          char **) = dropEnvironment;

} // namespace

} // namespace updateqm

int main(int count, char **arguments) {
    using updateqm::Status;
    if (count <= 1) {
        std::puts("Quillmark Update Tool Limited " QUILLMARK_TOOL_VERSION);
        return 0;
    }
    quillmark::_setStandardStreams(nullptr, nullptr); // whatever is wrong becomes one line
    try {
        updateqm::run({arguments + 1, arguments + count});
        return 0;
    } catch (const updateqm::Failure &failure) {
        return updateqm::tell(failure.what(), failure.status());
    } catch (const std::exception &exception) {
        return updateqm::tell(std::string(arguments[1]) + ": " + exception.what(), Status::CannotWrite);
    }
}
