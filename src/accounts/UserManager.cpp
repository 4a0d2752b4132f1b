#include "accounts/UserManager.h"

#include "accounts/KeyList.h"
#include "accounts/KeychainManager.h"
#include "accounts/UserListIndex.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "utils/IntegerValue.h"
#include "utils/Log.h"

#include <QSet>
#include <algorithm>
#include <limits>

namespace quillmark {

namespace {

constexpr qint32 kConnectionCount = 1; // deliberate: whatever a record holds, every reader sees one connection

bool offersInteger(const QVariant &value) {
    switch (value.typeId()) {
    case QMetaType::QString:
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

} // namespace

UserManager::UserManager() : UserManager(platform(), KeychainManager::sharedManager()) {}

UserRecord UserManager::userWithUserName(const QString &userName) const {
    return UserListIndex::sharedIndex().recordOf(userName, userList()).value_or(setupUserDefaults());
}

QVariantList UserManager::userList() const {
    const QVariant list = m_platform->userDefaults.objectForKey(kUserList);
    return list.typeId() == QMetaType::QVariantList ? list.toList() : QVariantList(); // a text would become characters
}

bool UserManager::doesUserKeyExists(const QString &userName) const {
    return UserListIndex::sharedIndex().recordOf(userName, userList()).has_value();
}

UserRecord UserManager::setupUserDefaults() {
    return {{kUserConnectionSpeedDown, 512}, {kUserConnectionSpeedUp, 64}, {kUserConnectionCount, 4},
            {kUserDownloadBandwidth, 100},   {kUserUploadBandwidth, 100},  {kUserEncryptTransfers, 1}};
}

QVariant UserManager::recordValue(const QString &key, const QString &userName) const {
    return userWithUserName(userName).value(key);
}

QVariant UserManager::objectForKey(const QString &key, const QString &userName) const {
    const auto unlessNull = [](const QString &text) { return text.isNull() ? QVariant() : QVariant(text); };
    if (kUserPassword == key) {
        return unlessNull(m_keychain->getPasswordForUser(userName));
    }
    if (kUserEncryptionKey == key) {
        return unlessNull(m_keychain->getEncryptionKeyForUser(userName));
    }
    return kUserConnectionCount == key ? QVariant(kConnectionCount) : recordValue(key, userName);
}

QVariant UserManager::objectForKeyAsString(const QString &key, const QString &userName) const {
    return kUserConnectionCount == key ? QVariant(QString::number(kConnectionCount)) : objectForKey(key, userName);
}

qint32 UserManager::objectForKeyAsInt(const QString &key, const QString &userName, qint32 defaultValue) const {
    using Limits = std::numeric_limits<qint32>;
    const qint64 value = objectForKeyAsLong(key, userName, defaultValue);
    return static_cast<qint32>(std::clamp<qint64>(value, Limits::min(), Limits::max()));
}

qint64 UserManager::objectForKeyAsLong(const QString &key, const QString &userName, qint64 defaultValue) const {
    if (kUserConnectionCount == key) {
        return kConnectionCount;
    }
    const QVariant value = recordValue(key, userName);
    return offersInteger(value) ? integerValueOf(value) : defaultValue;
}

QVariant UserManager::objectForKeyAsArray(const QString &key, const QString &userName) const {
    return recordValue(key, userName);
}

bool UserManager::setObject(const QVariant &value, const QString &key, const QString &userName, bool updateMono) {
    if (!value.isValid()) {
        return false;
    }
    if (kUserPassword == key) {
        return m_keychain->savePassword(value.toString(), userName);
    }
    if (kUserEncryptionKey == key) {
        return m_keychain->saveEncryptionKey(value.toString(), userName);
    }
    UserRecord record = userWithUserName(userName);
    record.insert(key, value);
    record.insert(kUserUserName, userName);
    return saveUser(record, userName, updateMono);
}

bool UserManager::removeObjectForKey(const QString &key, const QString &userName, bool updateMono) {
    UserRecord record = userWithUserName(userName);
    record.remove(key);
    return saveUser(record, userName, updateMono);
}

bool UserManager::saveUser(const UserRecord &record, const QString &userName, bool /*updateMono*/) {
    QVariantList list = userList();
    list.removeIf([&userName](const QVariant &entry) { return isRecordOf(userName, entry); });
    list.append(record);
    m_platform->userDefaults.setObject(kUserList, list);
    return save();
}

bool UserManager::updateUserWithUsername(const QString &newName, qint64 account) {
    const QVariantList list = userList();
    QSet<QString> oldNames;
    QVariantList renamed;
    for (const QVariant &entry : list) {
        UserRecord record = entry.toMap();
        if (!record.contains(kAccountId) || integerValueOf(record.value(kAccountId)) != account) {
            continue;
        }
        if (const QString oldName = userNameOf(entry); !oldName.isNull()) {
            if (oldName == newName) {
                renamed.clear(); // this one takes the place of those that got its name before
            }
            oldNames.insert(oldName);
        }
        record.insert(kUserUserName, newName);
        renamed.append(record);
    }
    if (renamed.isEmpty()) {
        return true;
    }
    QVariantList others;
    std::copy_if(list.cbegin(), list.cend(), std::back_inserter(others), [&oldNames](const QVariant &entry) {
        const QString name = userNameOf(entry);
        return name.isNull() || !oldNames.contains(name);
    });
    m_platform->userDefaults.setObject(kUserList, others + renamed);
    return save();
}

bool UserManager::save() {
    const bool isSaved = m_platform->userDefaults.synchronize();
    if (!isSaved) {
        logError("The preferences \"%@\" can't be written; what was set is kept until this program ends",
                 m_platform->userDefaults.file());
    }
    return isSaved;
}

} // namespace quillmark
