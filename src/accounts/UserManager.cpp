#include "accounts/UserManager.h"

#include "accounts/KeyList.h"
#include "accounts/KeychainManager.h"
#include "accounts/UserListIndex.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "platform/values/ScalarText.h"
#include "utils/IntegerValue.h"
#include "utils/Log.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <set>

namespace quillmark {

namespace {

constexpr std::int32_t kConnectionCount = 1; // deliberate: whatever a record holds, every reader sees one connection

bool offersInteger(const Value &value) {
    return value.is<std::string>() || value.is<bool>() || value.is<std::int64_t>() || value.is<std::uint64_t>() ||
           value.is<float>() || value.is<double>();
}

/// Puts the record at the end, in the place of all of that name.
void putRecord(List &list, UserRecord record, std::string_view userName) {
    std::erase_if(list, [&userName](const Value &entry) { return isRecordOf(userName, entry); });
    list.emplace_back(std::move(record));
}

/// The list when every record of that account has the new name; nothing when there is no such record.
std::optional<List> listAfterRenaming(const List &list, const std::string &newName, std::int64_t account) {
    std::set<std::string> oldNames;
    List renamed;
    for (const Value &entry : list) {
        UserRecord record = entry.dictionary();
        if (!record.contains(kAccountId) || integerValueOf(valueOf(record, kAccountId)) != account) {
            continue;
        }
        if (const std::string *oldName = userNameOf(entry)) {
            if (*oldName == newName) {
                renamed.clear(); // this one takes the place of those that got its name before
            }
            oldNames.insert(*oldName);
        }
        record.insert_or_assign(kUserUserName, newName);
        renamed.emplace_back(std::move(record));
    }
    if (renamed.empty()) {
        return std::nullopt;
    }
    List result;
    std::copy_if(list.begin(), list.end(), std::back_inserter(result), [&oldNames](const Value &entry) {
        const std::string *name = userNameOf(entry);
        return name == nullptr || !oldNames.contains(*name);
    });
    result.insert(result.end(), renamed.begin(), renamed.end());
    return result;
}

constexpr const char *kIsKept = "what was set is kept until this program ends";

void logProblem(const UserDefaults &defaults, const char *consequence) {
    logError("The preferences \"%@\" %@; %s", defaults.file(), defaults.problem(), consequence);
}

} // namespace

Value UserManager::recordOf(std::string_view userName) const {
    Value record = UserListIndex::sharedIndex().recordOf(userName, storedList());
    return record.isNothing() ? setupUserDefaults() : record;
}

UserRecord UserManager::userWithUserName(std::string_view userName) const { return recordOf(userName).dictionary(); }

Value UserManager::storedList() const {
    Value list = platform().userDefaults.objectForKey(kUserList);
    return list.is<List>() ? list : Value();
}

List UserManager::userList() const { return storedList().list(); }

bool UserManager::doesUserKeyExists(std::optional<std::string_view> userName) const {
    return userName && !UserListIndex::sharedIndex().recordOf(*userName, storedList()).isNothing();
}

UserRecord UserManager::setupUserDefaults() {
    return {{kUserConnectionSpeedDown, 512}, {kUserConnectionSpeedUp, 64}, {kUserConnectionCount, 4},
            {kUserDownloadBandwidth, 100},   {kUserUploadBandwidth, 100},  {kUserEncryptTransfers, 1}};
}

Value UserManager::recordValue(std::string_view key, std::string_view userName) const {
    return valueOf(recordOf(userName).dictionary(), key);
}

Value UserManager::objectForKey(std::string_view key, std::string_view userName) const {
    if (key == kUserPassword) {
        return m_keychain->getPasswordForUser(userName);
    }
    if (key == kUserEncryptionKey) {
        return m_keychain->getEncryptionKeyForUser(userName);
    }
    return key == kUserConnectionCount ? Value(kConnectionCount) : recordValue(key, userName);
}

Value UserManager::objectForKeyAsString(std::string_view key, std::string_view userName) const {
    return key == kUserConnectionCount ? Value(std::to_string(kConnectionCount)) : objectForKey(key, userName);
}

std::int32_t UserManager::objectForKeyAsInt(std::string_view key, std::string_view userName,
                                            std::int32_t defaultValue) const {
    using Limits = std::numeric_limits<std::int32_t>;
    const std::int64_t value = objectForKeyAsLong(key, userName, defaultValue);
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

std::int64_t UserManager::objectForKeyAsLong(std::string_view key, std::string_view userName,
                                             std::int64_t defaultValue) const {
    if (key == kUserConnectionCount) {
        return kConnectionCount;
    }
    const Value value = recordValue(key, userName);
    return offersInteger(value) ? integerValueOf(value) : defaultValue;
}

Value UserManager::objectForKeyAsArray(std::string_view key, std::string_view userName) const {
    return recordValue(key, userName);
}

bool UserManager::setObject(const Value &value, std::string_view key, std::string_view userName, bool /*updateMono*/) {
    if (value.isNothing()) {
        return false;
    }
    if (key == kUserPassword) {
        return m_keychain->savePassword(scalarText(value), userName);
    }
    if (key == kUserEncryptionKey) {
        return m_keychain->saveEncryptionKey(scalarText(value), userName);
    }
    return changeList([&](List &list) {
        UserRecord record = userWithUserName(userName);
        record.insert_or_assign(key, value);
        record.insert_or_assign(kUserUserName, userName);
        putRecord(list, std::move(record), userName);
    });
}

bool UserManager::removeObjectForKey(std::string_view key, std::string_view userName, bool /*updateMono*/) {
    return changeList([&](List &list) {
        UserRecord record = userWithUserName(userName);
        record.erase(key);
        putRecord(list, std::move(record), userName);
    });
}

bool UserManager::saveUser(const UserRecord &record, std::string_view userName, bool /*updateMono*/) {
    return changeList([&](List &list) { putRecord(list, record, userName); });
}

bool UserManager::updateUserWithUsername(std::string_view newName, std::int64_t account) {
    return change([&](UserDefaults &defaults) {
        if (const auto list = listAfterRenaming(userList(), std::string(newName), account)) {
            defaults.setObject(kUserList, *list);
        }
    });
}

bool UserManager::changeList(const std::function<void(List &list)> &changeOfList) const {
    return change([&](UserDefaults &defaults) {
        List list = userList();
        changeOfList(list);
        defaults.setObject(kUserList, list);
    });
}

bool UserManager::change(const std::function<void(UserDefaults &defaults)> &changeOfValues) const {
    UserDefaults &defaults = platform().userDefaults;
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
    const bool isSaved = platform().userDefaults.synchronize();
    if (!isSaved) {
        logProblem(platform().userDefaults, kIsKept);
    }
    return isSaved;
}

} // namespace quillmark
