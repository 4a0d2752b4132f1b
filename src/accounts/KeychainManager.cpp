#include "accounts/KeychainManager.h"

#include "accounts/JSONEncoder.h"
#include "platform/Keychain.h"
#include "platform/Platform.h"
#include "platform/values/Key.h"
#include "platform/values/ScalarText.h"
#include "platform/values/Utf8Text.h"
#include "texts/LocalizedStrings.h"
#include "utils/Assert.h"
#include "utils/BooleanValue.h"
#include "utils/Log.h"

#include <algorithm>

namespace quillmark {

namespace {

/// The service of the items of earlier versions, whatever the product's name was.
constexpr Key kLegacyServiceName{"Quillmark"};

constexpr Key kPassword{"password"};
constexpr Key kKeepSignedIn{"keepSignedIn"};
constexpr Key kSkipAuth{"skipAuth"};
constexpr Key kEncryptionKey{"encryptionKey"};

using OptionalText = KeychainManager::OptionalText;

bool isEmpty(OptionalText text) { return text.value_or("").empty(); }

/// The item is as it was, behind a keychain that can't be asked now. Cleaning up would destroy what is in order.
bool isOutOfReach(std::int32_t status) {
    constexpr std::int32_t kStatuses[] = {kKeychainInteractionNotAllowed, kKeychainNotAvailable,
                                          kKeychainNoDefaultKeychain, kKeychainUserCanceled, kKeychainAuthFailed};
    return std::find(std::begin(kStatuses), std::end(kStatuses), status) != std::end(kStatuses);
}

} // namespace

KeychainManager &KeychainManager::sharedManager() {
    // Never destroyed: other threads may ask until the very end.
    static auto &instance = *new KeychainManager(platform().keychain, LocalizedStrings::sharedManager());
    return instance;
}

KeychainManager::KeychainManager(Keychain &keychain, LocalizedStrings &strings)
    : m_keychain(keychain), m_strings(strings) {}

std::string KeychainManager::serviceName() const { return m_strings.localisedString("ProductName"); }

// Items

KeychainManager::Reading KeychainManager::read(OptionalText user, const std::string &serviceName) {
    if (!user) {
        return {};
    }
    std::unique_ptr<Keychain::Item> item;
    if (const std::int32_t status = m_keychain.findGenericPassword(serviceName, std::string(*user), item);
        status != 0) {
        return {status, status == kKeychainItemNotFound, {}};
    }
    std::string data;
    const std::int32_t status = item->copyContent(data);
    if (status == 0) {
        return {0, true, utf8Text(std::move(data))};
    }
    logNormal("Failed to read keychain item ( error = %d )", status);
    const bool isDamaged = !isOutOfReach(status);
    if (isDamaged) {
        item->remove(); // the next save makes a new one
    }
    return {status, isDamaged, {}};
}

std::int32_t KeychainManager::secKeychainFindGenericPassword(std::optional<std::string> *text, OptionalText userName) {
    return secKeychainFindGenericPassword(text, userName, serviceName());
}

std::int32_t KeychainManager::secKeychainFindGenericPassword(std::optional<std::string> *text, OptionalText userName,
                                                             const std::string &serviceName) {
    const Reading reading = read(userName, serviceName);
    if (text != nullptr && !*text) {
        *text = reading.text;
    }
    return reading.status;
}

std::int32_t KeychainManager::secKeychainModifyOrAddGenericPassword(const Value &value, OptionalText userName) {
    return secKeychainModifyOrAddGenericPassword(value, userName, serviceName());
}

std::int32_t KeychainManager::secKeychainModifyOrAddGenericPassword(const Value &value, OptionalText userName,
                                                                    const std::string &serviceName) {
    if (value.isNothing() || !userName) {
        return 0;
    }
    const auto *const text = value.as<std::string>();
    const auto *const bytes = value.as<Bytes>();
    QUILLMARK_ASSERT(text != nullptr || bytes != nullptr, "[value isKindOfClass:[NSString class]]", "KeychainManager");
    const std::string &data = text != nullptr ? *text : bytes->data;
    std::unique_ptr<Keychain::Item> item;
    std::int32_t status = m_keychain.findGenericPassword(serviceName, std::string(*userName), item);
    if (status == 0) {
        status = item->modifyContent(data);
    }
    // Another program may have deleted it since it was found.
    return status == kKeychainItemNotFound ? m_keychain.addGenericPassword(serviceName, std::string(*userName), data)
                                           : status;
}

bool KeychainManager::secKeychainRemoveAllItemsWithUserName(OptionalText userName) {
    return secKeychainRemoveAllItemsWithUserName(userName, serviceName());
}

bool KeychainManager::secKeychainRemoveAllItemsWithUserName(OptionalText userName, const std::string &serviceName) {
    std::unique_ptr<Keychain::Item> item;
    return userName && m_keychain.findGenericPassword(serviceName, std::string(*userName), item) == 0 &&
           item->remove() == 0;
}

// Documents

Dictionary KeychainManager::Reading::document() const {
    return JSONEncoder::createObjFromJSONStr(text.value_or("")).value_or(Dictionary());
}

std::int32_t KeychainManager::write(const Dictionary &document, OptionalText user) {
    return secKeychainModifyOrAddGenericPassword(JSONEncoder::createJSONStrFromDict(document), user);
}

Value KeychainManager::member(std::string_view name, OptionalText user) { return valueOf(read(user).document(), name); }

void KeychainManager::setMember(std::string_view name, bool value, OptionalText user) {
    Dictionary document = read(user).document();
    if (!document.empty()) { // a preference belongs to an account that is stored
        document.insert_or_assign(name, value);
        write(document, user);
    }
}

void KeychainManager::removeMember(std::string_view name, OptionalText user) {
    Dictionary document = read(user).document();
    if (document.erase(name)) {
        write(document, user);
    }
}

// Account operations

std::optional<std::string> KeychainManager::getPasswordForUser(OptionalText user, bool *keepLoggedin) {
    const std::string service = serviceName();
    std::optional<std::string> text;
    const std::int32_t status = secKeychainFindGenericPassword(&text, user, service);
    if (status == kKeychainItemNotFound && service != kLegacyServiceName &&
        secKeychainFindGenericPassword(&text, user, kLegacyServiceName) == 0 && text) {
        // Deliberate: whatever becomes of one step, the other one is taken.
        secKeychainRemoveAllItemsWithUserName(user, kLegacyServiceName);
        secKeychainModifyOrAddGenericPassword(*text, user, service);
    }
    if (!text || text->empty()) {
        return text;
    }
    auto document = JSONEncoder::createObjFromJSONStr(*text);
    if (!document) { // the bare password of an earlier version
        document = Dictionary{{kPassword, *text}, {kKeepSignedIn, true}};
        write(*document, user);
    }
    const std::string password = scalarText(valueOf(*document, kPassword)).value_or("");
    if (password.empty()) {
        return text; // deliberate
    }
    if (const Value &choice = valueOf(*document, kKeepSignedIn); keepLoggedin != nullptr && !choice.isNothing()) {
        *keepLoggedin = booleanValueOf(choice);
    }
    return password;
}

bool KeychainManager::savePassword(OptionalText password, OptionalText user, std::optional<bool> keepLoggedin) {
    if (isEmpty(user) || (isEmpty(password) && !keepLoggedin)) {
        return false;
    }
    constexpr const char *kFailure = "Failed to write keychain item ( error = %d )";
    const Reading reading = read(user);
    if (!reading.isWritable) {
        logNormal(kFailure, reading.status);
        return false;
    }
    Dictionary document = reading.document();
    if (keepLoggedin) {
        document.insert_or_assign(kKeepSignedIn, *keepLoggedin);
    }
    if (password) {
        document.insert_or_assign(kPassword, *password);
    }
    const std::int32_t status = write(document, user);
    if (status != 0) {
        logNormal(kFailure, status);
        if (!isOutOfReach(status)) {
            secKeychainRemoveAllItemsWithUserName(user);
        }
    }
    return status == 0;
}

bool KeychainManager::removePassword(OptionalText user) { return secKeychainRemoveAllItemsWithUserName(user); }

bool KeychainManager::skipAuthForUser(OptionalText user) { return booleanValueOf(member(kSkipAuth, user)); }
void KeychainManager::setSkipAuth(bool skipAuth, OptionalText user) { setMember(kSkipAuth, skipAuth, user); }
void KeychainManager::removeSkipAuthForUser(OptionalText user) { removeMember(kSkipAuth, user); }

bool KeychainManager::flagExistsForKey(OptionalText flag, OptionalText user) {
    return !isEmpty(flag) && !isEmpty(user) && read(user).document().contains(*flag);
}

bool KeychainManager::flagForKey(OptionalText flag, OptionalText user) {
    return !isEmpty(flag) && !isEmpty(user) && booleanValueOf(member(*flag, user));
}

void KeychainManager::setFlag(bool value, OptionalText flag, OptionalText user) {
    if (!isEmpty(flag) && !isEmpty(user)) {
        setMember(*flag, value, user);
    }
}

void KeychainManager::removeFlagForKey(OptionalText flag, OptionalText user) {
    if (!isEmpty(flag) && !isEmpty(user)) {
        removeMember(*flag, user);
    }
}

bool KeychainManager::saveEncryptionKey(OptionalText key, OptionalText user) {
    if (!key || !user) {
        return false;
    }
    const Reading reading = read(user);
    Dictionary document = reading.document();
    document.insert_or_assign(kEncryptionKey, *key);
    return reading.isWritable && write(document, user) == 0;
}

std::optional<std::string> KeychainManager::getEncryptionKeyForUser(OptionalText user) {
    return scalarText(member(kEncryptionKey, user));
}

} // namespace quillmark
