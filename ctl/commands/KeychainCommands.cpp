#include "Command.h"
#include "Input.h"

#include "accounts/KeychainManager.h"
#include "platform/Keychain.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace quillmark::ctl {

namespace {

KeychainManager &manager() { return KeychainManager::sharedManager(); }

std::string reasonOf(std::int32_t status) {
    switch (status) {
    case kKeychainInteractionNotAllowed:
        return "the keyring is locked";
    case kKeychainNotAvailable:
        return "there is no keyring service, or it does not answer";
    case kKeychainNoDefaultKeychain:
        return "there is no default keyring";
    default:
        return "the keyring gives status " + std::to_string(status);
    }
}

Failure failure(const std::string &user, const std::string &why) { return {"keychain item of \"" + user + '"', why}; }

/// Looks for an account's item; that it can't be reached is a failure. Every command does this first, so that a silent
/// service is waited for once. \returns whether the account has one.
bool findItem(const std::string &user) {
    const std::int32_t status = manager().secKeychainFindGenericPassword(nullptr, user);
    if (status != 0 && status != kKeychainItemNotFound) {
        throw failure(user, reasonOf(status));
    }
    return status == 0;
}

Failure writeFailure(const std::string &user) { return failure(user, "can't be written"); }

/// What the commands of this file take.
struct Arguments {
    bool isYes() const { return value == "yes"; }

    std::string user;
    std::string flag = "skipAuth"; ///< unless another one is named
    std::string value;
    std::string service;
    bool isPassword = false;
};
using SharedArguments = std::shared_ptr<Arguments>;

SharedArguments addUser(CLI::App &app) {
    auto arguments = std::make_shared<Arguments>();
    app.add_option("USER", arguments->user, "the account's user name")->required();
    return arguments;
}

void addName(CLI::App &app, Arguments &arguments) {
    app.add_option("NAME", arguments.flag, "the flag's name")->required();
}

void addValue(CLI::App &app, Arguments &arguments) {
    app.add_option("yes|no", arguments.value, "its value")->required()->check(CLI::IsMember({"yes", "no"}));
}

bool isFlagStored(const Arguments &arguments) { return manager().flagExistsForKey(arguments.flag, arguments.user); }

Answer tellFlag(const Output &output, const Arguments &arguments) {
    if (!findItem(arguments.user) || !isFlagStored(arguments)) {
        return Answer::No;
    }
    output.line(manager().flagForKey(arguments.flag, arguments.user) ? "yes" : "no");
    return Answer::Yes;
}

/// Sets a flag and looks whether it is set: the keychain manager does not say.
template <class Operation>
Answer setFlag(const Arguments &arguments, const Operation &set) {
    if (!findItem(arguments.user)) {
        return Answer::No;
    }
    set();
    if (!isFlagStored(arguments) || manager().flagForKey(arguments.flag, arguments.user) != arguments.isYes()) {
        throw writeFailure(arguments.user);
    }
    return Answer::Yes;
}

template <class Operation>
Answer removeFlag(const Arguments &arguments, const Operation &remove) {
    if (!findItem(arguments.user) || !isFlagStored(arguments)) {
        return Answer::No;
    }
    remove();
    if (isFlagStored(arguments)) {
        throw writeFailure(arguments.user);
    }
    return Answer::Yes;
}

Action defineGet(CLI::App &app) {
    return [arguments = addUser(app)](const Output &output) {
        const std::string &user = arguments->user;
        findItem(user);
        // A choice that is not stored is left as it was, so both are tried.
        bool unlessNo = false;
        bool unlessYes = true;
        const auto password = manager().getPasswordForUser(user, &unlessNo);
        manager().getPasswordForUser(user, &unlessYes);
        if (!password && !findItem(user)) {
            return Answer::No;
        }
        output.json(
            Dictionary{{"password", password}, {"keepSignedIn", unlessNo == unlessYes ? Value(unlessNo) : Value()}});
        return Answer::Yes;
    };
}

Action defineSave(CLI::App &app) {
    const auto arguments = addUser(app);
    app.add_flag("--password", arguments->isPassword, "store the password that standard input holds");
    app.add_option("--keep-signed-in", arguments->value, "store whether the user stays signed in")
        ->type_name("yes|no")
        ->check(CLI::IsMember({"yes", "no"}));
    return [arguments](const Output & /*output*/) {
        const std::string &user = arguments->user;
        const auto password = arguments->isPassword ? std::optional(secretInputText()) : std::nullopt;
        const bool hasChoice = !arguments->value.empty();
        if (user.empty()) {
            throw failure(user, "the user name is empty");
        }
        if (password.value_or("").empty() && !hasChoice) {
            throw failure(user, "there is nothing to store");
        }
        findItem(user);
        if (!manager().savePassword(password, user, hasChoice ? std::optional(arguments->isYes()) : std::nullopt)) {
            throw writeFailure(user);
        }
        return Answer::Yes;
    };
}

Action defineRemove(CLI::App &app) {
    return [arguments = addUser(app)](const Output & /*output*/) {
        if (!findItem(arguments->user)) {
            return Answer::No;
        }
        if (!manager().removePassword(arguments->user)) {
            throw failure(arguments->user, "can't be deleted");
        }
        return Answer::Yes;
    };
}

Action defineFlagGet(CLI::App &app) {
    const auto arguments = addUser(app);
    addName(app, *arguments);
    return [arguments](const Output &output) { return tellFlag(output, *arguments); };
}

Action defineFlagSet(CLI::App &app) {
    const auto arguments = addUser(app);
    addName(app, *arguments);
    addValue(app, *arguments);
    return [arguments](const Output & /*output*/) {
        return setFlag(*arguments, [&] { manager().setFlag(arguments->isYes(), arguments->flag, arguments->user); });
    };
}

Action defineFlagRemove(CLI::App &app) {
    const auto arguments = addUser(app);
    addName(app, *arguments);
    return [arguments](const Output & /*output*/) {
        return removeFlag(*arguments, [&] { manager().removeFlagForKey(arguments->flag, arguments->user); });
    };
}

Action defineSkipAuthGet(CLI::App &app) {
    return [arguments = addUser(app)](const Output &output) { return tellFlag(output, *arguments); };
}

Action defineSkipAuthSet(CLI::App &app) {
    const auto arguments = addUser(app);
    addValue(app, *arguments);
    return [arguments](const Output & /*output*/) {
        return setFlag(*arguments, [&] { manager().setSkipAuth(arguments->isYes(), arguments->user); });
    };
}

Action defineSkipAuthRemove(CLI::App &app) {
    return [arguments = addUser(app)](const Output & /*output*/) {
        return removeFlag(*arguments, [&] { manager().removeSkipAuthForUser(arguments->user); });
    };
}

Action defineKeyGet(CLI::App &app) {
    return [arguments = addUser(app)](const Output &output) {
        const auto key = findItem(arguments->user) ? manager().getEncryptionKeyForUser(arguments->user) : std::nullopt;
        if (!key) {
            return Answer::No;
        }
        output.line(*key);
        return Answer::Yes;
    };
}

Action defineKeySave(CLI::App &app) {
    return [arguments = addUser(app)](const Output & /*output*/) {
        const std::string key = secretInputText();
        findItem(arguments->user);
        if (!manager().saveEncryptionKey(key, arguments->user)) {
            throw writeFailure(arguments->user);
        }
        return Answer::Yes;
    };
}

/// The service is the product's name unless another one is given.
SharedArguments addUserAndService(CLI::App &app) {
    auto arguments = addUser(app);
    app.add_option("--service", arguments->service, "the item of another service than the product's name")
        ->type_name("S");
    return arguments;
}

std::string serviceOf(const Arguments &arguments) {
    return arguments.service.empty() ? manager().serviceName() : arguments.service;
}

Action defineRawGet(CLI::App &app) {
    return [arguments = addUserAndService(app)](const Output &output) {
        std::optional<std::string> text;
        const std::int32_t status =
            manager().secKeychainFindGenericPassword(&text, arguments->user, serviceOf(*arguments));
        if (status == kKeychainItemNotFound) {
            return Answer::No;
        }
        if (status != 0 || !text) {
            throw failure(arguments->user, status != 0 ? reasonOf(status) : "holds no UTF-8 text");
        }
        output.line(*text);
        return Answer::Yes;
    };
}

Action defineRawSet(CLI::App &app) {
    return [arguments = addUserAndService(app)](const Output & /*output*/) {
        const std::int32_t status = manager().secKeychainModifyOrAddGenericPassword(
            Bytes{secretInput()}, arguments->user, serviceOf(*arguments));
        if (status != 0) {
            throw failure(arguments->user, reasonOf(status));
        }
        return Answer::Yes;
    };
}

constexpr Command kCommands[] = {
    {"keychain", "get", "print an account's password and whether the user stays signed in",
     "quillmarkctl keychain get ada@example.com", defineGet},
    {"keychain", "save", "store an account's password, or whether the user stays signed in",
     "quillmarkctl keychain save ada@example.com --password --keep-signed-in yes < password.txt", defineSave,
     "A password with a character beyond U+00FF, such as the euro sign, does not come back as it was: items hold 8 "
     "bits a character."},
    {"keychain", "remove", "delete all that is kept of an account", "quillmarkctl keychain remove ada@example.com",
     defineRemove},
    {"keychain flag", "get", "print a flag of an account", "quillmarkctl keychain flag get ada@example.com beta",
     defineFlagGet},
    {"keychain flag", "set", "set a flag of an account that is stored",
     "quillmarkctl keychain flag set ada@example.com beta yes", defineFlagSet},
    {"keychain flag", "remove", "remove a flag of an account", "quillmarkctl keychain flag remove ada@example.com beta",
     defineFlagRemove},
    {"keychain skip-auth", "get", "print whether an account skips authentication",
     "quillmarkctl keychain skip-auth get ada@example.com", defineSkipAuthGet},
    {"keychain skip-auth", "set", "set whether a stored account skips authentication",
     "quillmarkctl keychain skip-auth set ada@example.com no", defineSkipAuthSet},
    {"keychain skip-auth", "remove", "forget whether an account skips authentication",
     "quillmarkctl keychain skip-auth remove ada@example.com", defineSkipAuthRemove},
    {"keychain key", "get", "print an account's encryption key", "quillmarkctl keychain key get ada@example.com",
     defineKeyGet},
    {"keychain key", "save", "store the encryption key that standard input holds",
     "quillmarkctl keychain key save ada@example.com < key.txt", defineKeySave},
    {"keychain raw", "get", "print an item's text as it is stored",
     "quillmarkctl keychain raw get ada@example.com --service Quillmark", defineRawGet},
    {"keychain raw", "set", "store what standard input holds as an item",
     "quillmarkctl keychain raw set ada@example.com < item.txt", defineRawSet},
};

} // namespace

std::span<const Command> keychainCommands() { return kCommands; }

} // namespace quillmark::ctl
