#include "Command.h"

#include "utils/ProductVersion.h"
#include "utils/VersionText.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

namespace quillmark::ctl {

namespace {

Action defineSelf(CLI::App &app) {
    const auto isShort = std::make_shared<bool>(false);
    app.add_flag("--short", *isShort, "leave the build out");
    return [isShort](const Output &output) {
        output.line(versionOfThisAppAsString(!*isShort));
        return Answer::Yes;
    };
}

std::shared_ptr<std::string> addText(CLI::App &app) {
    auto text = std::make_shared<std::string>();
    app.add_option("TEXT", *text, "a version")->required();
    return text;
}

Action defineParse(CLI::App &app) {
    const auto text = addText(app);
    return [text](const Output &output) {
        const MicrosoftStyleVersion version = microsoftStyleVersionFromString(*text);
        output.json(Dictionary({{"major", version.major},
                                {"minor", version.minor},
                                {"build", version.build},
                                {"revision", version.revision}}));
        return Answer::Yes;
    };
}

Action defineComponent(CLI::App &app) {
    const auto text = addText(app);
    return [text](const Output &output) {
        const auto version = parseVersionString(*text);
        if (!version) {
            return Answer::No;
        }
        output.json(Dictionary({{"major", version->major}, {"minor", version->minor}, {"bugfix", version->bugfix}}));
        return Answer::Yes;
    };
}

Action defineBuild(CLI::App &app) {
    const auto text = addText(app);
    return [text](const Output &output) {
        if (std::count(text->begin(), text->end(), ' ') != 1) { // would end the process
            throw Failure{"version build", '"' + *text + "\" is not a version, one blank and a build"};
        }
        output.line(std::to_string(buildNumberFromVersionStr(*text)));
        return Answer::Yes;
    };
}

constexpr Command kCommands[] = {
    {"version", "self", "print the bundle's version", "quillmarkctl version self --short", defineSelf},
    {"version", "parse", "take a version text apart into its four numbers",
     "quillmarkctl version parse \"1.14.4 (1303)\"", defineParse},
    {"version", "component", "take a component's version apart into its three numbers",
     "quillmarkctl version component 2.0.1", defineComponent},
    {"version", "build", "print the build in a version text", "quillmarkctl version build \"1.14.4 (1303)\"",
     defineBuild},
};

} // namespace

std::span<const Command> versionCommands() { return kCommands; }

} // namespace quillmark::ctl
