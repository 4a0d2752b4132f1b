#include "CommandLine.h"

#include <algorithm>
#include <vector>

namespace quillmark::ctl {

namespace {

/// A command with the words that lead to it; the first entry is the tool itself, with none.
struct Entry {
    std::string words;
    const CLI::App *app;
};

void collect(const CLI::App &app, const std::string &words, std::vector<Entry> &entries) {
    entries.push_back({words, &app});
    for (const CLI::App *command : app.get_subcommands({})) {
        collect(*command, words.empty() ? command->get_name() : words + ' ' + command->get_name(), entries);
    }
}

std::vector<Entry> entriesOf(const CLI::App &app) {
    std::vector<Entry> entries;
    collect(app, "", entries);
    return entries;
}

/// The options a user may see, their own names only.
std::vector<const CLI::Option *> optionsOf(const CLI::App &app) {
    return app.get_options([](const CLI::Option *option) { return !option->get_group().empty(); });
}

/// What can follow the command's words: commands and long options.
std::string wordsAfter(const Entry &entry, const CLI::App &tool) {
    std::string words;
    for (const CLI::App *command : entry.app->get_subcommands({})) {
        words += command->get_name() + ' ';
    }
    const auto addOptions = [&words](const CLI::App &app) {
        for (const CLI::Option *option : optionsOf(app)) {
            for (const std::string &name : option->get_lnames()) {
                words += "--" + name + ' ';
            }
        }
    };
    addOptions(*entry.app);
    if (entry.app != &tool) {
        addOptions(tool);
    }
    // --help is both the tool's and the command's.
    std::vector<std::string> unique;
    std::string result;
    for (size_t begin = 0; begin < words.size(); begin = words.find(' ', begin) + 1) {
        const std::string word = words.substr(begin, words.find(' ', begin) - begin);
        if (std::find(unique.begin(), unique.end(), word) == unique.end()) {
            unique.push_back(word);
            result += (result.empty() ? "" : " ") + word;
        }
    }
    return result;
}

std::string roff(std::string text) {
    for (size_t at = text.find_first_of("\\-"); at != std::string::npos; at = text.find_first_of("\\-", at + 2)) {
        text.insert(at, 1, '\\');
    }
    return text;
}

std::string usage(const CLI::App &app) {
    std::string line;
    for (const CLI::Option *option : optionsOf(app)) {
        if (option->get_positional()) {
            const bool isList = option->get_items_expected_max() > 1;
            line += " \\fI" + roff(option->get_name(true)) + "\\fR" + (isList ? "..." : "");
        }
    }
    return line;
}

std::string optionTexts(const CLI::App &app) {
    std::string text;
    for (const CLI::Option *option : optionsOf(app)) {
        const std::string name = option->get_positional() ? "\\fI" + roff(option->get_name(true)) + "\\fR"
                                                          : "\\fB" + roff("--" + option->get_lnames().front()) + "\\fR";
        const bool takesValue = !option->get_positional() && option->get_items_expected_max() > 0;
        text.append(".TP\n").append(name);
        text.append(takesValue ? " \\fI" + roff(option->get_type_name()) + "\\fR" : "").append("\n");
        text.append(roff(option->get_description())).append("\n");
    }
    return text;
}

std::string manPage(const CLI::App &tool) {
    std::string page =
        ".TH QUILLMARKCTL 1\n.SH NAME\nquillmarkctl \\- support tool of the Quillmark launcher\n"
        ".SH SYNOPSIS\n.B quillmarkctl\n[\\fIOPTIONS\\fR] \\fICOMMAND\\fR\n"
        ".SH DESCRIPTION\nResults go to standard output, a single value bare, all else as one JSON document.\n"
        ".SH OPTIONS\n" +
        optionTexts(tool) + ".SH COMMANDS\n";
    for (const Entry &entry : entriesOf(tool)) {
        if (entry.app->get_subcommands({}).empty()) {
            page.append(".SS ").append(roff(entry.words)).append(usage(*entry.app)).append("\n");
            page.append(roff(entry.app->get_description())).append(".\n").append(optionTexts(*entry.app));
            page.append(".PP\n").append(roff(entry.app->get_footer())).append("\n");
        }
    }
    return page + ".SH EXIT STATUS\n.TP\n0\ndone, or the answer is yes\n.TP\n1\nthe answer is no\n.TP\n2\n"
                  "the command line is wrong\n.TP\n3\nthe operation failed; standard error says what and why\n";
}

/// The commands' words as the branches of a shell's case statement.
std::string branches(const CLI::App &tool, const std::string &before, const std::string &after) {
    std::string text;
    for (const Entry &entry : entriesOf(tool)) {
        text.append("    '").append(entry.words).append("') ");
        text.append(before).append(wordsAfter(entry, tool)).append(after).append(" ;;\n");
    }
    return text;
}

/// Walks the words that stand already, as far as they are commands, into the variable "chain".
std::string pathLoop(const CLI::App &tool, const std::string &words) {
    std::string known;
    for (const Entry &entry : entriesOf(tool)) {
        known += entry.words.empty() ? "" : (known.empty() ? "'" : "|'") + entry.words + "'";
    }
    return "  local chain='' next word\n  for word in " + words +
           "; do\n    next=\"${chain:+$chain }$word\"\n    case \"$next\" in\n    " + known +
           ") chain=\"$next\" ;;\n    esac\n  done\n";
}

std::string bashCompletion(const CLI::App &tool) {
    return "_quillmarkctl() {\n" + pathLoop(tool, "\"${COMP_WORDS[@]:1:COMP_CWORD-1}\"") +
           "  local words=''\n  case \"$chain\" in\n" + branches(tool, "words='", "'") +
           "  esac\n  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\")\n}\n"
           "complete -o default -F _quillmarkctl quillmarkctl\n";
}

std::string zshCompletion(const CLI::App &tool) {
    return "#compdef quillmarkctl\n_quillmarkctl() {\n" + pathLoop(tool, "\"${(@)words[2,CURRENT-1]}\"") +
           "  case \"$chain\" in\n" + branches(tool, "compadd -- ", "") + "  esac\n  _files\n}\n_quillmarkctl \"$@\"\n";
}

std::string fishQuoted(const std::string &text) {
    std::string quoted = "'";
    for (const char character : text) {
        quoted += character == '\'' || character == '\\' ? std::string("\\") + character : std::string(1, character);
    }
    return quoted + '\'';
}

std::string fishCompletion(const CLI::App &tool) {
    std::string text;
    for (const Entry &entry : entriesOf(tool)) {
        const std::string condition =
            entry.words.empty()
                ? "__fish_use_subcommand"
                : "string match -q -- " + fishQuoted("quillmarkctl " + entry.words + "*") + " (commandline -cp)";
        const std::string start = "complete -c quillmarkctl -n " + fishQuoted(condition);
        for (const CLI::App *command : entry.app->get_subcommands({})) {
            text.append(start).append(" -a ").append(command->get_name());
            text.append(" -d ").append(fishQuoted(command->get_description())).append("\n");
        }
        for (const CLI::Option *option : optionsOf(*entry.app)) {
            for (const std::string &name : option->get_lnames()) {
                text.append(start).append(" -l ").append(name);
                text.append(" -d ").append(fishQuoted(option->get_description())).append("\n");
            }
        }
    }
    return text;
}

} // namespace

std::string generated(const CLI::App &app, const std::string &form) {
    if (form == "man") {
        return manPage(app);
    }
    if (form == "bash") {
        return bashCompletion(app);
    }
    return form == "zsh" ? zshCompletion(app) : fishCompletion(app);
}

} // namespace quillmark::ctl
