#include "CommandLine.h"

#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/values/WhiteSpace.h"
#include "utils/Exception.h"
#include "utils/LogSetup.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace quillmark::ctl {

namespace {

int tell(const std::string &what, const std::string &why, int status) {
    const std::string named = trimmed(what).empty() ? '"' + what + '"' : what;
    std::fputs((simplified("quillmarkctl: " + named + ": " + why) + '\n').c_str(), stderr);
    return status;
}

/// Takes another bundle's resources, for good: the managers keep the bundle of their first use.
void takeBundle(const std::string &path) {
    static const std::unique_ptr<Bundle> bundle = nativeBundle(path);
    std::error_code error;
    if (!std::filesystem::is_directory(bundle->resourcePath(), error)) {
        throw Failure{path, "is not an application bundle"};
    }
    static const Platform withBundle = nativePlatform().with(*bundle);
    installPlatform(&withBundle);
}

int run(const CommandLine &commandLine) {
    const Options &options = commandLine.options();
    if (options.bundle) {
        takeBundle(*options.bundle);
    }
    if (options.logLevel) {
        initLogging2("error", *options.logLevel, std::nullopt);
        _setStandardStreams(stderr, stderr);
        logReportedProblems();
    }
    const Output output(stdout, options.isPretty);
    return static_cast<int>(commandLine.action()(output));
}

int parseAndRun(int count, char **arguments) {
    CommandLine commandLine;
    try {
        commandLine.parse({arguments + std::min(count, 1), arguments + count});
    } catch (const CLI::Success &help) { // --help and --version
        return commandLine.app().exit(help);
    } catch (const CLI::ParseError &error) {
        if (commandLine.options().generatedForm) {
            std::fputs(generated(commandLine.app(), *commandLine.options().generatedForm).c_str(), stdout);
            return 0;
        }
        const std::vector<std::string> unknown = commandLine.app().remaining();
        const std::string why = unknown.empty() ? error.what() : "there is no \"" + unknown.front() + "\"; see --help";
        return tell(commandLine.commandName(), why, kWrongCommandLine);
    }
    const std::string what = commandLine.commandName();
    try {
        return run(commandLine);
    } catch (const Failure &failure) {
        return tell(failure.what, failure.why, kFailed);
    } catch (const Exception &exception) {
        return tell(what, exception.reason(), kFailed);
    } catch (const std::exception &exception) {
        return tell(what, exception.what(), kFailed);
    }
}

} // namespace

} // namespace quillmark::ctl

int main(int count, char **arguments) {
    // Standard output carries results, standard error one line: no log.
    quillmark::_setStandardStreams(nullptr, nullptr);
    return quillmark::ctl::parseAndRun(count, arguments);
}
