#pragma once

#include "Command.h"

#include <CLI/CLI.hpp>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quillmark::ctl {

/// The options that every command has.
struct Options {
    bool isPretty = false;
    std::optional<std::string> bundle;
    std::optional<std::string> logLevel;
    std::optional<std::string> generatedForm; ///< of the documentation that the build makes: man, bash, zsh or fish
};

/// The tool's command line: every command of the tables.
class CommandLine {
public:
    CommandLine();

    CLI::App &app() { return m_app; }
    /// Raises what CLI11 raises.
    void parse(std::vector<std::string> words);
    const CLI::App &app() const { return m_app; }

    /// The action of the command that was parsed.
    const Action &action() const;
    /// The words of the command that was parsed, or "command line" when it did not come to one.
    std::string commandName() const;

    const Options &options() const { return m_options; }

private:
    using Word = std::vector<std::string>::iterator;
    /// The first word that is neither an option of every command nor the value of one; "--" is one.
    Word firstPlainWord(Word word, Word end) const;
    void add(const Command &command);
    CLI::App &groupNamed(const std::string &name);

    CLI::App m_app;
    Options m_options;
    std::map<const CLI::App *, Action> m_actions;
};

/// The manual page and the shells' completions, made from the command line itself. The name is one of
/// Options::generatedForm.
std::string generated(const CLI::App &app, const std::string &form);

} // namespace quillmark::ctl
