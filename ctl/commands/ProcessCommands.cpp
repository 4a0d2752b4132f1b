#include "Command.h"

#include "platform/Platform.h"
#include "platform/Workspace.h"
#include "tools/LaunchedApplications.h"
#include "tools/ProcessUtilities.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <memory>

namespace quillmark::ctl {

namespace {

/// The error as the result, and as the reason of the failure.
Answer tellError(const Output &output, const std::string &what, const std::optional<Error> &error) {
    if (!error) {
        return Answer::Yes;
    }
    output.json(Dictionary{{"domain", error->domain},
                           {"code", error->code},
                           {"failureReason", error->failureReason()},
                           {"description", error->description()}});
    throw Failure{what, error->description().value_or("")};
}

std::shared_ptr<std::string> addText(CLI::App &app, const char *name, const char *description) {
    auto text = std::make_shared<std::string>();
    app.add_option(name, *text, description)->required();
    return text;
}

Action defineCoreRunning(CLI::App &app) {
    const auto name = addText(app, "NAME", "the core's process name");
    return [name](const Output & /*output*/) {
        const bool isRunning = ProcessUtilities::quillmarkCoreAlreadyRunning(*name);
        return isRunning ? Answer::Yes : Answer::No;
    };
}

Action defineList(CLI::App & /*app*/) {
    return [](const Output &output) {
        List applications;
        for (const Dictionary &record : platform().workspace.launchedApplications()) {
            applications.emplace_back(
                Dictionary{{"bundleIdentifier", valueOf(record, kApplicationBundleIdentifier).text().value_or("")},
                           {"processIdentifier", valueOf(record, kApplicationProcessIdentifier)},
                           {"path", valueOf(record, kApplicationPath)}});
        }
        output.json(applications);
        return Answer::Yes;
    };
}

Action defineRunning(CLI::App &app) {
    const auto identifier = addText(app, "ID", "a bundle identifier");
    return [identifier](const Output & /*output*/) {
        return isApplicationRunning(*identifier) ? Answer::Yes : Answer::No;
    };
}

Action defineLaunch(CLI::App &app) {
    const auto identifier = addText(app, "ID", "a bundle identifier");
    return [identifier](const Output &output) {
        const std::string what = *identifier;
        return tellError(output, what, launchApplication(what));
    };
}

Action defineQuit(CLI::App &app) {
    const auto identifier = addText(app, "ID", "a bundle identifier");
    const auto seconds = std::make_shared<double>(0);
    CLI::Option *wait = app.add_option("--wait", *seconds, "wait until it has quit, so long at the most")
                            ->type_name("SECONDS")
                            ->check([](const std::string &text) {
                                double number = 0;
                                const bool isOne =
                                    CLI::detail::lexical_cast(text, number) && std::isfinite(number) && number >= 0;
                                return isOne ? std::string() : "\"" + text + "\" is not a finite number from 0";
                            });
    return [identifier, seconds, wait](const Output &output) {
        const std::string what = *identifier;
        return tellError(output, what, quitApplication(what, wait->count() > 0, *seconds));
    };
}

constexpr Command kCommands[] = {
    {"process", "core-running", "tell by the exit status whether a core application runs",
     "quillmarkctl process core-running QuillmarkCore", defineCoreRunning},
    {"process", "list", "list the applications that run", "quillmarkctl process list --pretty", defineList},
    {"process", "running", "tell by the exit status whether an application runs",
     "quillmarkctl process running com.quillmark.QuillmarkCore", defineRunning},
    {"process", "launch", "start an application from the Applications folders",
     "quillmarkctl process launch com.quillmark.QuillmarkLauncher", defineLaunch},
    {"process", "quit", "ask an application to quit", "quillmarkctl process quit com.quillmark.QuillmarkCore --wait 4",
     defineQuit},
};

} // namespace

std::span<const Command> processCommands() { return kCommands; }

} // namespace quillmark::ctl
