#include "accounts/KeychainManager.h"

#include "accounts/JSONEncoder.h"
#include "accounts/Key.h"
#include "branding/LocalizedStrings.h"
#include "platform/Keychain.h"
#include "platform/Platform.h"
#include "utils/Assert.h"
#include "utils/BooleanValue.h"
#include "utils/Log.h"
#include "utils/Utf8Text.h"

#include <algorithm>

namespace quillmark {

namespace {

/// The service of the items of earlier versions, whatever the product's name was.
constexpr Key kLegacyServiceName{u"Quillmark"};

constexpr Key kPassword{u"password"};
constexpr Key kKeepSignedIn{u"keepSignedIn"};
constexpr Key kSkipAuth{u"skipAuth"};
constexpr Key kEncryptionKey{u"encryptionKey"};

/// The item is as it was, behind a keychain that can't be asked now. Cleaning up would destroy what is in order.
bool isOutOfReach(qint32 status) {
    constexpr qint32 kStatuses[] = {kKeychainInteractionNotAllowed, kKeychainNotAvailable, kKeychainNoDefaultKeychain,
                                    kKeychainUserCanceled, kKeychainAuthFailed};
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

QString KeychainManager::serviceName() const { return m_strings.localisedString(QStringLiteral("ProductName")); }

// Items

KeychainManager::Reading KeychainManager::read(const QString &userName, const QString &serviceName) {
    if (userName.isNull()) {
        return {};
    }
    std::unique_ptr<Keychain::Item> item;
    if (const qint32 status = m_keychain.findGenericPassword(serviceName.toStdString(), userName.toStdString(), item);
        status != 0) {
        return {status, status == kKeychainItemNotFound, {}};
    }
    std::string data;
    const qint32 status = item->copyContent(data);
    if (status == 0) {
        return {0, true, utf8Text(data)};
    }
    logNormal("Failed to read keychain item ( error = %d )", status);
    const bool isDamaged = !isOutOfReach(status);
    if (isDamaged) {
        item->remove(); // the next save makes it anew
    }
    return {status, isDamaged, {}};
}

qint32 KeychainManager::secKeychainFindGenericPassword(QString *text, const QString &userName) {
    return secKeychainFindGenericPassword(text, userName, serviceName());
}

qint32 KeychainManager::secKeychainFindGenericPassword(QString *text, const QString &userName,
                                                       const QString &serviceName) {
    const Reading reading = read(userName, serviceName);
    if (text != nullptr && text->isNull()) {
        *text = reading.text;
    }
    return reading.status;
}

qint32 KeychainManager::secKeychainModifyOrAddGenericPassword(const QVariant &value, const QString &userName) {
    return secKeychainModifyOrAddGenericPassword(value, userName, serviceName());
}

qint32 KeychainManager::secKeychainModifyOrAddGenericPassword(const QVariant &value, const QString &userName,
                                                              const QString &serviceName) {
    if (!value.isValid() || userName.isNull()) {
        return 0;
    }
    const bool isText = value.userType() == QMetaType::QString;
    QUILLMARK_ASSERT(isText || value.userType() == QMetaType::QByteArray, "[value isKindOfClass:[NSString class]]",
                     "KeychainManager");
    const QByteArray data = isText ? value.toString().toUtf8() : value.toByteArray();
    if (data.isNull()) {
        return 0;
    }
    std::unique_ptr<Keychain::Item> item;
    qint32 status = m_keychain.findGenericPassword(serviceName.toStdString(), userName.toStdString(), item);
    if (status == 0) {
        status = item->modifyContent(data.toStdString());
    }
    // Another program may have deleted it since it was found.
    return status == kKeychainItemNotFound
               ? m_keychain.addGenericPassword(serviceName.toStdString(), userName.toStdString(), data.toStdString())
               : status;
}

bool KeychainManager::secKeychainRemoveAllItemsWithUserName(const QString &userName) {
    return secKeychainRemoveAllItemsWithUserName(userName, serviceName());
}

bool KeychainManager::secKeychainRemoveAllItemsWithUserName(const QString &userName, const QString &serviceName) {
    std::unique_ptr<Keychain::Item> item;
    return !userName.isNull() &&
           m_keychain.findGenericPassword(serviceName.toStdString(), userName.toStdString(), item) == 0 &&
           item->remove() == 0;
}

// Documents

KeychainManager::Stored KeychainManager::storedFor(const QString &user) {
    const Reading reading = read(user, serviceName());
    return {reading.status, reading.isWritable,
            JSONEncoder::createObjFromJSONStr(reading.text).value_or(QVariantMap())};
}

qint32 KeychainManager::write(const QVariantMap &document, const QString &user) {
    return secKeychainModifyOrAddGenericPassword(JSONEncoder::createJSONStrFromDict(document), user);
}

QVariant KeychainManager::member(const QString &name, const QString &user) {
    return storedFor(user).document.value(name);
}

void KeychainManager::setMember(const QString &name, bool value, const QString &user) {
    QVariantMap document = storedFor(user).document;
    if (!document.isEmpty()) { // a preference belongs to an account that is stored
        document.insert(name, value);
        write(document, user);
    }
}

void KeychainManager::removeMember(const QString &name, const QString &user) {
    QVariantMap document = storedFor(user).document;
    if (document.remove(name) > 0) {
        write(document, user);
    }
}

// Account operations

QString KeychainManager::getPasswordForUser(const QString &user, bool *keepLoggedin) {
    const QString service = serviceName();
    QString text;
    const qint32 status = secKeychainFindGenericPassword(&text, user, service);
    if (status == kKeychainItemNotFound && kLegacyServiceName != service &&
        secKeychainFindGenericPassword(&text, user, kLegacyServiceName) == 0 && !text.isNull()) {
        // Deliberate: whatever becomes of one step, the other one is taken.
        secKeychainRemoveAllItemsWithUserName(user, kLegacyServiceName);
        secKeychainModifyOrAddGenericPassword(text, user, service);
    }
    if (text.isEmpty()) {
        return text;
    }
    auto document = JSONEncoder::createObjFromJSONStr(text);
    if (!document) { // the bare password of an earlier version
        document = QVariantMap{{kPassword, text}, {kKeepSignedIn, true}};
        write(*document, user);
    }
    QString password = document->value(kPassword).toString();
    if (password.isEmpty()) {
        return text; // deliberate
    }
    if (keepLoggedin != nullptr && document->contains(kKeepSignedIn)) {
        *keepLoggedin = booleanValueOf(document->value(kKeepSignedIn));
    }
    return password;
}

bool KeychainManager::savePassword(const QString &password, const QString &user, std::optional<bool> keepLoggedin) {
    if (user.isEmpty() || (password.isEmpty() && !keepLoggedin)) {
        return false;
    }
    constexpr const char *kFailure = "Failed to write keychain item ( error = %d )";
    Stored stored = storedFor(user);
    if (!stored.isWritable) {
        logNormal(kFailure, stored.status);
        return false;
    }
    if (keepLoggedin) {
        stored.document.insert(kKeepSignedIn, *keepLoggedin);
    }
    if (!password.isNull()) {
        stored.document.insert(kPassword, password);
    }
    const qint32 status = write(stored.document, user);
    if (status != 0) {
        logNormal(kFailure, status);
        if (!isOutOfReach(status)) {
            secKeychainRemoveAllItemsWithUserName(user);
        }
    }
    return status == 0;
}

bool KeychainManager::removePassword(const QString &user) { return secKeychainRemoveAllItemsWithUserName(user); }

bool KeychainManager::skipAuthForUser(const QString &user) { return booleanValueOf(member(kSkipAuth, user)); }
void KeychainManager::setSkipAuth(bool skipAuth, const QString &user) { setMember(kSkipAuth, skipAuth, user); }
void KeychainManager::removeSkipAuthForUser(const QString &user) { removeMember(kSkipAuth, user); }

bool KeychainManager::flagExistsForKey(const QString &flag, const QString &user) {
    return !flag.isEmpty() && !user.isEmpty() && storedFor(user).document.contains(flag);
}

bool KeychainManager::flagForKey(const QString &flag, const QString &user) {
    return !flag.isEmpty() && !user.isEmpty() && booleanValueOf(member(flag, user));
}

void KeychainManager::setFlag(bool value, const QString &flag, const QString &user) {
    if (!flag.isEmpty() && !user.isEmpty()) {
        setMember(flag, value, user);
    }
}

void KeychainManager::removeFlagForKey(const QString &flag, const QString &user) {
    if (!flag.isEmpty() && !user.isEmpty()) {
        removeMember(flag, user);
    }
}

bool KeychainManager::saveEncryptionKey(const QString &key, const QString &user) {
    if (key.isNull() || user.isNull()) {
        return false;
    }
    Stored stored = storedFor(user);
    stored.document.insert(kEncryptionKey, key);
    return stored.isWritable && write(stored.document, user) == 0;
}

QString KeychainManager::getEncryptionKeyForUser(const QString &user) {
    return member(kEncryptionKey, user).toString();
}

} // namespace quillmark
