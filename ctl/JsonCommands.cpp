#include "Command.h"
#include "Input.h"
#include "accounts/JSONEncoder.h"

#include <CLI/CLI.hpp>
#include <QJsonDocument>

namespace quillmark::ctl {

namespace {

const char *typeOf(const QVariant &value) {
    switch (value.typeId()) {
    case QMetaType::Bool:
        return "boolean";
    case QMetaType::LongLong:
        return "integer";
    case QMetaType::Double:
        return "double";
    default:
        return "string";
    }
}

Action defineDecode(CLI::App & /*app*/) {
    return [](const Output &output) {
        const auto members = JSONEncoder::createObjFromJSONStr(standardInputText());
        if (!members) {
            return Answer::No;
        }
        QJsonObject result;
        for (auto member = members->begin(); member != members->end(); ++member) {
            result.insert(member.key(),
                          QJsonObject{{QStringLiteral("type"), QString::fromLatin1(typeOf(member.value()))},
                                      {QStringLiteral("value"), QJsonValue::fromVariant(member.value())}});
        }
        output.json(result);
        return Answer::Yes;
    };
}

/// A value that is a list, an object or null becomes an empty text.
Action defineEncode(CLI::App & /*app*/) {
    return [](const Output &output) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(standardInput(), &error);
        if (error.error != QJsonParseError::NoError) {
            throw Failure{QStringLiteral("standard input"),
                          QStringLiteral("%1 at byte %2").arg(error.errorString()).arg(error.offset)};
        }
        if (!document.isObject()) {
            throw Failure{QStringLiteral("standard input"), QStringLiteral("is no JSON object")};
        }
        output.line(JSONEncoder::createJSONStrFromDict(document.object().toVariantMap()));
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
