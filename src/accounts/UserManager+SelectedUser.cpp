#include "accounts/KeyList.h"
#include "accounts/UserManager.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"

namespace quillmark {

namespace {

constexpr std::int32_t kConsumerAccount = 10;
constexpr std::int32_t kBusinessAccount = 9;

Value valueOrRemoval(std::optional<std::string_view> text) { return text ? Value(*text) : Value(); }

} // namespace

std::string UserManager::lastUsedUserName() const {
    return platform().userDefaults.objectForKey(kLastUsedUserName).text().value_or("");
}

void UserManager::setLastUsedUserName(std::optional<std::string_view> userName) {
    platform().userDefaults.setObject(kLastUsedUserName, valueOrRemoval(userName));
}

std::optional<std::string> UserManager::previousAddUserName() const {
    return platform().userDefaults.objectForKey(kPreviousAddUserName).text();
}

void UserManager::setPreviousAddUserName(std::optional<std::string_view> userName) {
    platform().userDefaults.setObject(kPreviousAddUserName, valueOrRemoval(userName));
}

std::int32_t UserManager::selectedInt(std::string_view key, std::int32_t defaultValue) const {
    return objectForKeyAsInt(key, lastUsedUserName(), defaultValue);
}

std::optional<std::string> UserManager::recordText(std::string_view key, std::string_view userName) const {
    return recordValue(key, userName).text();
}

std::int32_t UserManager::selectedUserAccountType() const { return selectedInt(kUserAccountType, kConsumerAccount); }
bool UserManager::isBusinessUser() const { return selectedUserAccountType() == kBusinessAccount; }
bool UserManager::isShowingTeamFolders() const { return selectedInt(kUserShowTeamFolders, 0) != 0; }
// Deliberate: any number shows team folders above, only 1 does here.
bool UserManager::selectedUserShowTeamFolders() const { return selectedInt(kUserShowTeamFolders, 0) == 1; }
bool UserManager::isConsumerSharing() const { return !isShowingTeamFolders(); }
bool UserManager::isBusinessSharing() const { return !isConsumerSharing(); }
bool UserManager::isSimplifiedWelcome() const { return isShowingTeamFolders() || isBusinessUser(); }
bool UserManager::selectedUserAllowQMDisk() const { return selectedInt(kUserAllowQMDisk, 1) == 1; }
bool UserManager::selectedUserEnableQMDisk() const {
    return selectedUserAllowQMDisk() && selectedInt(kUserEnableQMDisk, 1) == 1;
}
bool UserManager::selectedUserHasQMDisk() const { return selectedUserEnableQMDisk() || selectedUserShowTeamFolders(); }
bool UserManager::selectedUserAllowBackup() const { return selectedInt(kUserAllowBackup, 1) == 1; }
bool UserManager::selectedUserEnableBackup() const {
    return selectedUserAllowBackup() && selectedInt(kUserEnableBackup, 1) == 1;
}
bool UserManager::selectedUserAllowSharing() const { return selectedInt(kUserAllowSharing, 1) == 1; }
bool UserManager::selectedUserEncryptTransfers() const { return selectedInt(kUserEncryptTransfers, 0) == 1; }
bool UserManager::selectedUserEncryptNewFiles() const { return selectedInt(kUserEncryptNewFiles, 0) == 1; }
bool UserManager::ignoreServerExclusions() const { return selectedInt(kIgnoreServerExclusions, 0) != 0; }
bool UserManager::selectedUserHaveClientIdent() const { return !selectedUserClientIdent().value_or("").empty(); }
std::optional<std::string> UserManager::selectedUserClientIdent() const {
    return recordText(kUserClientIdent, lastUsedUserName());
}
std::optional<std::string> UserManager::selectedUserCacheLocation() const {
    return recordText(kCacheLocation, lastUsedUserName());
}
std::optional<std::string> UserManager::selectedUserCacheName() const {
    return recordText(kUserCacheName, lastUsedUserName());
}
std::optional<std::string> UserManager::selectedUserCachePath() const { return userCachePath(lastUsedUserName()); }

} // namespace quillmark
