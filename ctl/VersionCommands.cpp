#include "Command.h"

#include "utils/Version.h"

#include <CLI/CLI.hpp>
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

constexpr Command kCommands[] = {
    {"version", "self", "print the bundle's version", "quillmarkctl version self --short", defineSelf},
};

} // namespace

std::span<const Command> versionCommands() { return kCommands; }

} // namespace quillmark::ctl
