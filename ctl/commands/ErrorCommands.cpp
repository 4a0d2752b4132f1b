#include "Command.h"

#include "utils/ErrorText.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace quillmark::ctl {

namespace {

Action definePosix(CLI::App &app) {
    const auto number = std::make_shared<int>(0);
    app.add_option("N", *number, "the error number")->required();
    return [number](const Output &output) {
        output.line(posixErrorToString(*number));
        return Answer::Yes;
    };
}

constexpr Command kCommands[] = {
    {"error", "posix", "print the text of a POSIX error", "quillmarkctl error posix 13", definePosix},
};

} // namespace

std::span<const Command> errorCommands() { return kCommands; }

} // namespace quillmark::ctl
