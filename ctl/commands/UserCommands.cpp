#include "Command.h"
#include "Input.h"
#include "UserFeatures.h"

#include "accounts/KeyList.h"
#include "accounts/UserManager.h"
#include "platform/MainThread.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "platform/values/WhiteSpace.h"
#include "utils/IntegerValue.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>

namespace quillmark::ctl {

namespace {

/// What the commands of this file take.
struct Arguments {
    std::string user;
    std::string key;
    std::string value;
    std::string form;
    std::int64_t number = 0;
    bool isSet = false;
};
using SharedArguments = std::shared_ptr<Arguments>;

SharedArguments addUser(CLI::App &app) {
    auto arguments = std::make_shared<Arguments>();
    app.add_option("USER", arguments->user, "the account's user name")->required();
    return arguments;
}

SharedArguments addUserAndKey(CLI::App &app) {
    auto arguments = addUser(app);
    app.add_option("KEY", arguments->key, "the setting's key")->required();
    return arguments;
}

/// A change that could not be stored is a failure.
Answer requireStored(bool isStored) {
    if (!isStored) {
        throw Failure{platform().userDefaults.file(), platform().userDefaults.problem().value_or("")};
    }
    return Answer::Yes;
}

UserManager readUsers() {
    requirePreferences();
    return UserManager();
}

bool isSecret(const std::string &key) { return key == kUserPassword || key == kUserEncryptionKey; }

Action defineList(CLI::App & /*app*/) {
    return [](const Output &output) {
        List names;
        for (const Value &entry : readUsers().userList()) {
            names.push_back(valueOf(entry.dictionary(), kUserUserName));
        }
        output.json(names);
        return Answer::Yes;
    };
}

Action defineShow(CLI::App &app) {
    return [arguments = addUser(app)](const Output &output) {
        const UserManager users = readUsers();
        if (!users.doesUserKeyExists(arguments->user)) {
            return Answer::No;
        }
        output.json(users.userWithUserName(arguments->user));
        return Answer::Yes;
    };
}

/// A value by one of the accessors; what an accessor for numbers gives without a default is absent when the default
/// decides about it.
Value valueBy(const Arguments &arguments) {
    const UserManager users = readUsers();
    const std::string &key = arguments.key;
    const std::string &user = arguments.user;
    if (arguments.form == "int" || arguments.form == "long") {
        const auto number = [&](std::int64_t defaultValue) {
            return arguments.form == "int" ? users.objectForKeyAsInt(key, user, static_cast<std::int32_t>(defaultValue))
                                           : users.objectForKeyAsLong(key, user, defaultValue);
        };
        const bool isThere = arguments.isSet || number(0) == number(1);
        return isThere ? Value(number(arguments.number)) : Value();
    }
    if (arguments.form == "string") {
        return users.objectForKeyAsString(key, user);
    }
    return arguments.form == "array" ? users.objectForKeyAsArray(key, user) : users.objectForKey(key, user);
}

Action defineGet(CLI::App &app) {
    auto arguments = addUserAndKey(app);
    arguments->form = "any";
    app.add_option("--as", arguments->form, "by which accessor: any, string, int, long or array")
        ->type_name("FORM")
        ->check(CLI::IsMember({"any", "string", "int", "long", "array"}));
    const CLI::Option *defaultValue =
        app.add_option("--default", arguments->number, "what an absent number counts as")->type_name("N");
    return [arguments, defaultValue](const Output &output) {
        arguments->isSet = defaultValue->count() > 0;
        output.json(valueBy(*arguments));
        return Answer::Yes;
    };
}

/// A plus before a digit means nothing.
std::string_view withoutPlus(std::string_view number) {
    return number.substr(number.size() > 1 && number[0] == '+' && number[1] != '-' ? 1 : 0);
}

/// The value to store, of the type that was asked for. One that is not of that type was found out before.
Value valueToSet(const Arguments &arguments) {
    const std::string value = arguments.value == "-" ? secretInputText() : arguments.value;
    if (arguments.form == "int") {
        const std::string_view digits = withoutPlus(trimmed(value));
        std::int64_t number = 0;
        const auto [end, error] = std::from_chars(digits.begin(), digits.end(), number);
        if (error != std::errc() || end != digits.end()) {
            throw Failure{arguments.key, "the value is not an integer"};
        }
        return number;
    }
    if (arguments.form == "bool") {
        if (value != "yes" && value != "no") {
            throw Failure{arguments.key, R"(the value is neither "yes" nor "no")"};
        }
        return value == "yes";
    }
    return value;
}

Action defineSet(CLI::App &app) {
    auto arguments = addUserAndKey(app);
    arguments->form = "string";
    app.add_option("VALUE", arguments->value, "the value; - reads it from standard input")->required();
    app.add_option("--type", arguments->form, "string, int, or bool (yes or no)")
        ->type_name("TYPE")
        ->check(CLI::IsMember({"string", "int", "bool"}));
    app.callback([arguments] {
        if (isSecret(arguments->key) && arguments->value != "-") {
            throw CLI::ValidationError(arguments->key, "is a secret: give - and write it to standard input");
        }
    });
    return [arguments](const Output & /*output*/) {
        const std::string &key = arguments->key;
        const bool isStored = UserManager().setObject(valueToSet(*arguments), key, arguments->user);
        if (!isStored && isSecret(key)) {
            throw Failure{"keychain item of \"" + arguments->user + '"', "can't be written"};
        }
        return requireStored(isStored);
    };
}

Action defineUnset(CLI::App &app) {
    return [arguments = addUserAndKey(app)](const Output & /*output*/) {
        UserManager users = readUsers();
        const std::string &user = arguments->user;
        if (!users.userWithUserName(user).contains(arguments->key) || !users.doesUserKeyExists(user)) {
            return Answer::No;
        }
        return requireStored(users.removeObjectForKey(arguments->key, user));
    };
}

Action defineRename(CLI::App &app) {
    auto arguments = std::make_shared<Arguments>();
    app.add_option("ACCOUNT", arguments->number, "the account's number")->required();
    app.add_option("NEWNAME", arguments->user, "its new user name")->required();
    return [arguments](const Output & /*output*/) {
        UserManager users = readUsers();
        const List list = users.userList();
        const bool isKnown = std::any_of(list.begin(), list.end(), [&arguments](const Value &entry) {
            const Value &account = valueOf(entry.dictionary(), kAccountId);
            return !account.isNothing() && integerValueOf(account) == arguments->number;
        });
        return isKnown ? requireStored(users.updateUserWithUsername(arguments->user, arguments->number)) : Answer::No;
    };
}

/// Ends the wait for a removal, and keeps what is to be told then.
class Waiting final : public UserManager::RemovalObserver {
public:
    bool isFinished = false;
    std::optional<Failure> cacheThatStays;

    void removeUserFinished() override { isFinished = true; }
    void cacheStays(const std::string &path, const std::string &reason) override {
        cacheThatStays = Failure{path, "the cache is not removed: " + reason};
    }
};

Action defineRemove(CLI::App &app) {
    auto arguments = addUser(app);
    app.add_flag("--remove-cache", arguments->isSet, "delete the user's cache as well");
    return [arguments](const Output & /*output*/) {
        const UserManager users = readUsers();
        if (!users.doesUserKeyExists(arguments->user)) {
            return Answer::No;
        }
        Waiting waiting;
        users.removeUser(arguments->user, arguments->isSet, &waiting);
        while (!waiting.isFinished) {
            platform().mainThread.runOnce();
        }
        if (waiting.cacheThatStays) {
            throw Failure(*waiting.cacheThatStays);
        }
        return requireStored(!platform().userDefaults.problem());
    };
}

Action defineClean(CLI::App &app) {
    auto arguments = std::make_shared<Arguments>();
    const CLI::Option *user = app.add_option("USER", arguments->user, "a user to remove as well");
    return [arguments, user](const Output & /*output*/) {
        return requireStored(
            UserManager().removeIncompleteUser(user->count() > 0 ? std::optional(arguments->user) : std::nullopt));
    };
}

Action defineSelected(CLI::App &app) {
    auto arguments = std::make_shared<Arguments>();
    CLI::Option *name = app.add_option("NAME", arguments->user, "the user to select");
    app.add_flag("--none", arguments->isSet, "select nobody")->excludes(name);
    return [arguments, name](const Output &output) {
        UserManager users;
        if (name->count() > 0 || arguments->isSet) {
            users.setLastUsedUserName(arguments->isSet ? std::nullopt : std::optional(arguments->user));
            return requireStored(users.save());
        }
        const std::string selected = readUsers().lastUsedUserName();
        if (selected.empty()) {
            return Answer::No;
        }
        output.line(selected);
        return Answer::Yes;
    };
}

Action defineFeatures(CLI::App & /*app*/) {
    return [](const Output &output) {
        output.json(selectedUserFeatures(readUsers()));
        return Answer::Yes;
    };
}

Action defineCachePath(CLI::App &app) {
    return [arguments = addUser(app)](const Output &output) {
        const auto path = readUsers().userCachePath(arguments->user);
        if (!path) {
            return Answer::No;
        }
        output.line(*path);
        return Answer::Yes;
    };
}

constexpr Command kCommands[] = {
    {"user", "list", "list the users in the order in which they were last saved", "quillmarkctl user list", defineList},
    {"user", "show", "show a user's record as it is stored", "quillmarkctl user show anna --pretty", defineShow},
    {"user", "get", "print one setting of a user", "quillmarkctl user get anna BrandID --as int --default -1",
     defineGet},
    {"user", "set", "change one setting of a user", "quillmarkctl user set anna BrandID 15 --type int", defineSet},
    {"user", "unset", "remove one setting of a user", "quillmarkctl user unset anna BrandID", defineUnset},
    {"user", "rename", "give an account's records another user name", "quillmarkctl user rename 4711 anna@example.com",
     defineRename},
    {"user", "remove", "remove a user, but not his keychain item", "quillmarkctl user remove anna --remove-cache",
     defineRemove},
    {"user", "clean", "remove the records that have no user name", "quillmarkctl user clean", defineClean},
    {"user", "selected", "tell or set who is selected: the last one who signed in", "quillmarkctl user selected anna",
     defineSelected},
    {"user", "features", "tell what the selected user may do and does", "quillmarkctl user features --pretty",
     defineFeatures},
    {"user", "cache-path", "print the folder of a user's cache", "quillmarkctl user cache-path anna", defineCachePath},
};

} // namespace

std::span<const Command> userCommands() { return kCommands; }

} // namespace quillmark::ctl
