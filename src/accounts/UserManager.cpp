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
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

UserRecord recordIn(const QVariantList &list, const QString &userName) {
    return UserListIndex::sharedIndex().recordOf(userName, list).value_or(UserManager::setupUserDefaults());
}

/// Puts the record at the end, in the place of all of that name.
void putRecord(QVariantList &list, const UserRecord &record, const QString &userName) {
    list.removeIf([&userName](const QVariant &entry) { return isRecordOf(userName, entry); });
    list.append(record);
}

/// The list when every record of that account has the new name; nothing when there is no such record.
std::optional<QVariantList> listAfterRenaming(const QVariantList &list, const QString &newName, qint64 account) {
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
        return std::nullopt;
    }
    QVariantList others;
    std::copy_if(list.cbegin(), list.cend(), std::back_inserter(others), [&oldNames](const QVariant &entry) {
        const QString name = userNameOf(entry);
        return name.isNull() || !oldNames.contains(name);
    });
    return others + renamed;
}

constexpr const char *kIsKept = "what was set is kept until this program ends";

void logProblem(const UserDefaults &defaults, const char *consequence) {
    logError("The preferences \"%@\" %@; %s", defaults.file(), defaults.problem(), consequence);
}

} // namespace

UserManager::UserManager() : UserManager(platform(), KeychainManager::sharedManager()) {}

UserRecord UserManager::userWithUserName(const QString &userName) const { return recordIn(userList(), userName); }

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

bool UserManager::setObject(const QVariant &value, const QString &key, const QString &userName, bool /*updateMono*/) {
    if (!value.isValid()) {
        return false;
    }
    if (kUserPassword == key) {
        return m_keychain->savePassword(value.toString(), userName);
    }
    if (kUserEncryptionKey == key) {
        return m_keychain->saveEncryptionKey(value.toString(), userName);
    }
    return changeList([&](QVariantList &list) {
        UserRecord record = recordIn(list, userName);
        record.insert(key, value);
        record.insert(kUserUserName, userName);
        putRecord(list, record, userName);
    });
}

bool UserManager::removeObjectForKey(const QString &key, const QString &userName, bool /*updateMono*/) {
    return changeList([&](QVariantList &list) {
        UserRecord record = recordIn(list, userName);
        record.remove(key);
        putRecord(list, record, userName);
    });
}

bool UserManager::saveUser(const UserRecord &record, const QString &userName, bool /*updateMono*/) {
    return changeList([&](QVariantList &list) { putRecord(list, record, userName); });
}

bool UserManager::updateUserWithUsername(const QString &newName, qint64 account) {
    return change([&](UserDefaults &defaults) {
        if (const auto list = listAfterRenaming(userList(), newName, account)) {
            defaults.setObject(kUserList, *list);
        }
    });
}

bool UserManager::changeList(const std::function<void(QVariantList &list)> &changeOfList) const {
    return change([&](UserDefaults &defaults) {
        QVariantList list = userList();
        changeOfList(list);
        defaults.setObject(kUserList, list);
    });
}

bool UserManager::change(const std::function<void(UserDefaults &defaults)> &changeOfValues) const {
    UserDefaults &defaults = m_platform->userDefaults;
    bool isBegun = false;
    const bool isDone = defaults.change([&] {
        isBegun = true;
        changeOfValues(defaults);
    });
    if (!isDone) {
        logProblem(defaults, isBegun ? kIsKept : "nothing was changed");
    }
    return isDone;
}

bool UserManager::save() {
    const bool isSaved = m_platform->userDefaults.synchronize();
    if (!isSaved) {
        logProblem(m_platform->userDefaults, kIsKept);
    }
    return isSaved;
}

} // namespace quillmark
