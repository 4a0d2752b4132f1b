#include "Command.h"
#include "Input.h"

#include "accounts/KeychainManager.h"

namespace quillmark::ctl {

namespace {

Action defineEncode(CLI::App & /*app*/) {
    return [](const Output &output) {
        output.line(KeychainManager::encryptString(standardInputText()).value_or(""));
        return Answer::Yes;
    };
}

Action defineDecode(CLI::App & /*app*/) {
    return [](const Output &output) {
        const std::string text = standardInputText();
        const std::string decoded = KeychainManager::decryptString(text).value_or("");
        if (decoded.empty() && !text.empty()) {
            return Answer::No;
        }
        output.line(decoded);
        return Answer::Yes;
    };
}

constexpr Command kCommands[] = {
    {"base64", "encode", "encode standard input on one line", "quillmarkctl base64 encode < text.txt", defineEncode},
    {"base64", "decode", "decode standard input to text", "quillmarkctl base64 decode < encoded.txt", defineDecode},
};

} // namespace

std::span<const Command> base64Commands() { return kCommands; }

} // namespace quillmark::ctl
