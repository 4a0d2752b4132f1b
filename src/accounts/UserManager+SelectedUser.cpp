#include "accounts/KeyList.h"
#include "accounts/UserManager.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"

namespace quillmark {

namespace {

constexpr qint32 kConsumerAccount = 10;
constexpr qint32 kBusinessAccount = 9;

QString textOrNull(const QVariant &value) {
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

QVariant valueOrRemoval(const QString &text) { return text.isNull() ? QVariant() : QVariant(text); }

} // namespace

QString UserManager::lastUsedUserName() const {
    const QString name = textOrNull(m_platform->userDefaults.objectForKey(kLastUsedUserName));
    return name.isNull() ? QStringLiteral("") : name;
}

void UserManager::setLastUsedUserName(const QString &userName) {
    m_platform->userDefaults.setObject(kLastUsedUserName, valueOrRemoval(userName));
}

QString UserManager::previousAddUserName() const {
    return textOrNull(m_platform->userDefaults.objectForKey(kPreviousAddUserName));
}

void UserManager::setPreviousAddUserName(const QString &userName) {
    m_platform->userDefaults.setObject(kPreviousAddUserName, valueOrRemoval(userName));
}

qint32 UserManager::selectedInt(const QString &key, qint32 defaultValue) const {
    return objectForKeyAsInt(key, lastUsedUserName(), defaultValue);
}

QString UserManager::recordText(const QString &key, const QString &userName) const {
    return textOrNull(recordValue(key, userName));
}

qint32 UserManager::selectedUserAccountType() const { return selectedInt(kUserAccountType, kConsumerAccount); }
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
bool UserManager::selectedUserHaveClientIdent() const { return !selectedUserClientIdent().isEmpty(); }
QString UserManager::selectedUserClientIdent() const { return recordText(kUserClientIdent, lastUsedUserName()); }
QString UserManager::selectedUserCacheLocation() const { return recordText(kCacheLocation, lastUsedUserName()); }
QString UserManager::selectedUserCacheName() const { return recordText(kUserCacheName, lastUsedUserName()); }
QString UserManager::selectedUserCachePath() const { return userCachePath(lastUsedUserName()); }

} // namespace quillmark
