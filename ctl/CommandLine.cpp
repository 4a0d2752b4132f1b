#include "CommandLine.h"

#include "utils/ProductVersion.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace quillmark::ctl {

namespace {

constexpr Group kGroups[] = {
    {"base64", "Base64, as the product writes and reads it"},
    {"bundles", "application bundles on this computer"},
    {"error", "texts of error numbers"},
    {"finder", "the desktop's file manager"},
    {"header", "the header of the launcher's windows"},
    {"host", "this computer's name, and other computers"},
    {"json", "flat JSON objects, as the product writes and reads them"},
    {"keychain", "what the desktop's keyring holds of the accounts"},
    {"keychain flag", "flags of accounts, by their names"},
    {"keychain key", "encryption keys of accounts"},
    {"keychain raw", "items as they are stored"},
    {"keychain skip-auth", "whether accounts skip authentication"},
    {"log", "the log file"},
    {"move", "the move into the Applications folder"},
    {"process", "applications and processes that run"},
    {"user", "accounts that are known here, and their settings"},
    {"version", "versions of the application and of texts"},
};

constexpr std::string_view kRunCommand = "run"; // the one that takes another program's words

const CLI::App *chosen(const CLI::App &app) {
    const auto commands = app.get_subcommands();
    return commands.empty() ? &app : chosen(*commands.front());
}

} // namespace

CommandLine::CommandLine() : m_app("Support tool of the Quillmark launcher", "quillmarkctl") {
    m_app.require_subcommand(1);
    m_app.fallthrough();
    m_app.set_version_flag(
        "--version", [] { return versionOfThisAppAsString(true); }, "print the product's version with its build");
    m_app.add_option("--bundle", m_options.bundle, "take the resources of another launcher bundle")->type_name("APP");
    m_app.add_flag("--pretty", m_options.isPretty, "indent JSON results");
    m_app
        .add_option("--log-level", m_options.logLevel,
                    "show log lines up to error, normal, verbose or detailed on standard error")
        ->type_name("LEVEL")
        ->check(CLI::IsMember({"error", "normal", "verbose", "detailed"}));
    m_app.add_option("--generate", m_options.generatedForm)
        ->group("")
        ->check(CLI::IsMember({"man", "bash", "zsh", "fish"}));
    for (const auto commands :
         {bundleCommands(), errorCommands(), finderCommands(), headerCommands(), installCommands(), integrityCommands(),
          logCommands(), jsonCommands(), keychainCommands(), base64Commands(), moveCommands(), processCommands(),
          runCommands(), systemCommands(), textCommands(), userCommands(), versionCommands()}) {
        for (const Command &command : commands) {
            add(command);
        }
    }
}

CLI::App &CommandLine::groupNamed(const std::string &name) {
    const size_t lastBlank = name.rfind(' ');
    CLI::App &parent = lastBlank != std::string::npos ? groupNamed(name.substr(0, lastBlank)) : m_app;
    const std::string lastWord = name.substr(lastBlank + 1); // the whole name when there is no blank
    const auto isNamed = [&lastWord](const CLI::App *app) { return app->get_name() == lastWord; };
    if (const auto existing = parent.get_subcommands(isNamed); !existing.empty()) {
        return *existing.front();
    }
    std::string summary;
    for (const Group &group : kGroups) {
        if (name == group.name) {
            summary = group.summary;
        }
    }
    CLI::App *group = parent.add_subcommand(lastWord, summary);
    group->require_subcommand(1);
    group->fallthrough();
    return *group;
}

void CommandLine::add(const Command &command) {
    CLI::App &parent = command.group != nullptr ? groupNamed(command.group) : m_app;
    CLI::App *app = parent.add_subcommand(command.name, command.summary);
    const std::string note = command.note != nullptr ? std::string(command.note) + '\n' : std::string();
    app->footer(note + "Example: " + command.example);
    app->fallthrough();
    m_actions.emplace(app, command.define(*app));
}

void CommandLine::parse(std::vector<std::string> words) {
    const auto command = firstPlainWord(words.begin(), words.end());
    if (command != words.end() && *command == kRunCommand) {
        // From the program's path on all is the program's own, whatever it looks like. Options before it are ours, and
        // are read as if they stood before the command; but for the one that asks for the command's own help.
        const auto path = firstPlainWord(std::next(command), words.end());
        if (std::none_of(command, path, [](const std::string &word) { return word == "-h" || word == "--help"; })) {
            std::rotate(command, std::next(command), path);
        }
        if (path != words.end() && *path != "--") {
            words.insert(path, "--");
        }
    }
    std::reverse(words.begin(), words.end()); // as the library takes them
    m_app.parse(std::move(words));
}

CommandLine::Word CommandLine::firstPlainWord(Word word, Word end) const {
    while (word != end && word->starts_with('-') && *word != "--") {
        const CLI::Option *option = m_app.get_option_no_throw(*word);
        const bool hasValue = option != nullptr && option->get_items_expected_max() > 0;
        std::advance(word, std::min<std::ptrdiff_t>(hasValue ? 2 : 1, end - word));
    }
    return word;
}

const Action &CommandLine::action() const { return m_actions.at(chosen(m_app)); }

std::string CommandLine::commandName() const {
    const CLI::App *command = chosen(m_app);
    if (command == &m_app) {
        return "command line";
    }
    std::string name = command->get_name();
    for (const CLI::App *parent = command->get_parent(); parent != nullptr && parent != &m_app;
         parent = parent->get_parent()) {
        name.insert(0, parent->get_name() + ' ');
    }
    return name;
}

} // namespace quillmark::ctl
