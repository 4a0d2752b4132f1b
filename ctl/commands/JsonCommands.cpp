#include "Command.h"
#include "Input.h"
#include "Json.h"

#include "accounts/JSONEncoder.h"

#include <CLI/CLI.hpp>

namespace quillmark::ctl {

namespace {

const char *typeOf(const Value &value) {
    return value.is<bool>()           ? "boolean"
           : value.is<std::int64_t>() ? "integer"
           : value.is<double>()       ? "double"
                                      : "string";
}

Action defineDecode(CLI::App & /*app*/) {
    return [](const Output &output) {
        const auto members = JSONEncoder::createObjFromJSONStr(standardInputText());
        if (!members) {
            return Answer::No;
        }
        Dictionary result;
        for (const auto &[key, value] : *members) {
            result.insert_or_assign(key, Dictionary{{"type", typeOf(value)}, {"value", value}});
        }
        output.json(result);
        return Answer::Yes;
    };
}

/// A value that is a list, an object or null becomes an empty text.
Action defineEncode(CLI::App & /*app*/) {
    return [](const Output &output) {
        output.line(JSONEncoder::createJSONStrFromDict(membersOfJson(standardInput())));
        return Answer::Yes;
    };
}

Action defineEscape(CLI::App & /*app*/) {
    return [](const Output &output) {
        output.text(JSONEncoder::stringByAddingJSONEscape(standardInputText()));
        return Answer::Yes;
    };
}

Action defineUnescape(CLI::App & /*app*/) {
    return [](const Output &output) {
        output.text(JSONEncoder::stringByReplacingJSONEscape(standardInputText()));
        return Answer::Yes;
    };
}

constexpr Command kCommands[] = {
    {"json", "decode", "tell the members of a flat JSON object, as the product reads it, with their types",
     "quillmarkctl json decode < item.txt", defineDecode},
    {"json", "encode", "write a JSON object as the product writes its own", "quillmarkctl json encode < object.json",
     defineEncode},
    {"json", "escape", "escape a text as in such an object", "quillmarkctl json escape < text.txt", defineEscape},
    {"json", "unescape", "undo these escapes, one kind after the other", "quillmarkctl json unescape < escaped.txt",
     defineUnescape},
};

} // namespace

std::span<const Command> jsonCommands() { return kCommands; }

} // namespace quillmark::ctl
