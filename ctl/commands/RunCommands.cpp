#include "Command.h"

#include "tools/Task+OneLineTasksWithOutput.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace quillmark::ctl {

namespace {

Value valueOf(const std::optional<Error> &error) {
    if (!error) {
        return {};
    }
    return Dictionary{{"domain", error->domain},
                      {"code", error->code},
                      {"standardError", valueOf(error->userInfo, kTaskStandardErrorKey)},
                      {"terminationStatus", valueOf(error->userInfo, kTaskTerminationStatusKey)},
                      {"failureReason", error->failureReason()},
                      {"description", error->description()}};
}

Action defineRun(CLI::App &app) {
    const auto path = std::make_shared<std::string>();
    app.add_option("PATH", *path, "the program; all that follows is its own")->required();
    app.prefix_command();
    app.fallthrough(false);
    return [path, &app](const Output &output) {
        const std::vector<std::string> words = app.remaining(); // with the "--" before the path
        std::optional<Error> error;
        const auto printed = stringByLaunchingPath(*path, {words.begin() + 1, words.end()}, {}, &error);
        output.json(Dictionary{{"output", printed}, {"error", valueOf(error)}});
        if (error && error->code == kTaskFailed) {
            throw Failure{*path, error->description().value_or("could not be run")};
        }
        return Answer::Yes;
    };
}

constexpr Command kCommands[] = {
    {nullptr, "run", "run a program to its end and tell what it printed", "quillmarkctl run /bin/ls -l /Applications",
     defineRun},
};

} // namespace

std::span<const Command> runCommands() { return kCommands; }

} // namespace quillmark::ctl
