#include "Command.h"

#include "texts/LocalizedStrings.h"
#include "utils/LogSetup.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <vector>

namespace quillmark::ctl {

namespace {

struct WriteArguments {
    std::string level;
    std::vector<std::string> texts;
    std::optional<std::string> folder;
    std::optional<std::string> family;
    std::optional<std::string> product;
    std::string fileLevel = "normal";
    std::optional<std::string> stdioLevel;
    unsigned int repeat = 1;
};

std::string orProductName(const std::optional<std::string> &name) {
    return name ? *name : QMLocalizedString("ProductName");
}

/// The logger's set-up ends the process when a name is empty, so that has to be told before.
std::string notEmpty(const std::string &text, const char *what) {
    if (text.empty()) {
        throw Failure{"log write", std::string("the ") + what + " is empty"};
    }
    return text;
}

Answer writeLines(const WriteArguments &arguments, const Output &output) {
    const std::string fileLevel = notEmpty(arguments.fileLevel, "file level");
    const std::string family = notEmpty(orProductName(arguments.family), "family name");
    const std::string product = notEmpty(orProductName(arguments.product), "product name");
    const std::string stdioLevel =
        arguments.stdioLevel ? notEmpty(*arguments.stdioLevel, "stdio level") : loggingLevelStrStdio();
    if (arguments.stdioLevel) {
        _setStandardStreams(stderr, stderr);
    }
    initLogging3(fileLevel, stdioLevel, arguments.folder, family, product);

    static constexpr std::string_view kLevels[] = {"error", "normal", "verbose", "detailed"};
    const auto level =
        static_cast<LoggingLevel>(std::find(std::begin(kLevels), std::end(kLevels), arguments.level) - kLevels);
    for (unsigned int round = 0; round < arguments.repeat; ++round) {
        for (const std::string &text : arguments.texts) {
            const FormatArgument message(text);
            _log(level, "%@", FormatArguments(&message, 1));
        }
    }
    _flushLog();
    output.line(getLogFilePath().value_or(""));
    return Answer::Yes;
}

Action defineWrite(CLI::App &app) {
    const auto arguments = std::make_shared<WriteArguments>();
    app.add_option("LEVEL", arguments->level, "error, normal, verbose or detailed")
        ->required()
        ->check(CLI::IsMember({"error", "normal", "verbose", "detailed"}));
    app.add_option("TEXT", arguments->texts, "one line each")->required();
    app.add_option("--folder", arguments->folder, "the folder of the log file")->type_name("F");
    app.add_option("--family", arguments->family, "the product family, for the default folder")->type_name("N");
    app.add_option("--product", arguments->product, "the product, for the file's name")->type_name("N");
    app.add_option("--file-level", arguments->fileLevel, "the log file's level")->type_name("L");
    app.add_option("--stdio-level", arguments->stdioLevel, "show the lines up to this level on standard error")
        ->type_name("L");
    app.add_option("--repeat", arguments->repeat, "write the lines N times")->type_name("N");
    return [arguments](const Output &output) { return writeLines(*arguments, output); };
}

constexpr Command kCommands[] = {
    {"log", "write", "write lines to a new log file and print its path",
     "quillmarkctl log write normal \"support was here\" --folder /tmp/logs", defineWrite},
};

} // namespace

std::span<const Command> logCommands() { return kCommands; }

} // namespace quillmark::ctl
