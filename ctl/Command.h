#pragma once

#include "platform/values/Value.h"

#include <cstdio>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace quillmark::ctl {

/// What a command found out; the exit status of the tool.
enum class Answer { Yes = 0, No = 1 };

inline constexpr int kWrongCommandLine = 2;
inline constexpr int kFailed = 3;

/// Thrown by a command that could not do its work: what is at fault (a file, a key, a program), and why.
struct Failure {
    std::string what;
    std::string why;
};

/// Where results go: one line each, but for a text that is handed on as it is. A result that can't be written is a
/// Failure.
class Output {
public:
    Output(FILE *stream, bool isPretty) : m_stream(stream), m_isPretty(isPretty) {}

    void line(std::string_view text) const;
    void text(std::string_view text) const;
    void json(const Value &value) const;

private:
    FILE *m_stream;
    bool m_isPretty;
};

/// A list of texts.
List listOf(const std::vector<std::string> &texts);

using Action = std::function<Answer(const Output &)>;

/// One command of the tool: "quillmarkctl GROUP NAME", or "quillmarkctl NAME" when the group is null. A group of groups
/// is several words.
struct Command {
    const char *group = nullptr;
    const char *name = nullptr;
    const char *summary = nullptr;
    const char *example = nullptr;
    /// Adds the command's own options and arguments, and gives what runs once they are parsed.
    Action (*define)(CLI::App &app) = nullptr;
    /// A sentence that its users have to know; null for none.
    const char *note = nullptr;
};

/// A word before several commands.
struct Group {
    const char *name;
    const char *summary;
};

std::span<const Command> base64Commands();
std::span<const Command> bundleCommands();
std::span<const Command> errorCommands();
std::span<const Command> finderCommands();
std::span<const Command> headerCommands();
std::span<const Command> installCommands();
std::span<const Command> integrityCommands();
std::span<const Command> jsonCommands();
std::span<const Command> keychainCommands();
std::span<const Command> logCommands();
std::span<const Command> moveCommands();
std::span<const Command> processCommands();
std::span<const Command> runCommands();
std::span<const Command> systemCommands();
std::span<const Command> textCommands();
std::span<const Command> userCommands();
std::span<const Command> versionCommands();

} // namespace quillmark::ctl
