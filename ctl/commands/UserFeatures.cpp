#include "UserFeatures.h"

#include "accounts/UserManager.h"

namespace quillmark::ctl {

namespace {

struct Feature {
    const char *name;
    Value (*value)(const UserManager &users);
};

template <auto accessor>
Value valueOf(const UserManager &users) {
    return (users.*accessor)();
}

constexpr Feature kFeatures[] = {
    {"lastUsedUserName", valueOf<&UserManager::lastUsedUserName>},
    {"previousAddUserName", valueOf<&UserManager::previousAddUserName>},
    {"selectedUserAccountType", valueOf<&UserManager::selectedUserAccountType>},
    {"isBusinessUser", valueOf<&UserManager::isBusinessUser>},
    {"isShowingTeamFolders", valueOf<&UserManager::isShowingTeamFolders>},
    {"selectedUserShowTeamFolders", valueOf<&UserManager::selectedUserShowTeamFolders>},
    {"isConsumerSharing", valueOf<&UserManager::isConsumerSharing>},
    {"isBusinessSharing", valueOf<&UserManager::isBusinessSharing>},
    {"isSimplifiedWelcome", valueOf<&UserManager::isSimplifiedWelcome>},
    {"selectedUserAllowQMDisk", valueOf<&UserManager::selectedUserAllowQMDisk>},
    {"selectedUserEnableQMDisk", valueOf<&UserManager::selectedUserEnableQMDisk>},
    {"selectedUserHasQMDisk", valueOf<&UserManager::selectedUserHasQMDisk>},
    {"selectedUserAllowBackup", valueOf<&UserManager::selectedUserAllowBackup>},
    {"selectedUserEnableBackup", valueOf<&UserManager::selectedUserEnableBackup>},
    {"selectedUserAllowSharing", valueOf<&UserManager::selectedUserAllowSharing>},
    {"selectedUserEncryptTransfers", valueOf<&UserManager::selectedUserEncryptTransfers>},
    {"selectedUserEncryptNewFiles", valueOf<&UserManager::selectedUserEncryptNewFiles>},
    {"ignoreServerExclusions", valueOf<&UserManager::ignoreServerExclusions>},
    {"selectedUserHaveClientIdent", valueOf<&UserManager::selectedUserHaveClientIdent>},
    {"selectedUserClientIdent", valueOf<&UserManager::selectedUserClientIdent>},
    {"selectedUserCacheLocation", valueOf<&UserManager::selectedUserCacheLocation>},
    {"selectedUserCacheName", valueOf<&UserManager::selectedUserCacheName>},
    {"selectedUserCachePath", valueOf<&UserManager::selectedUserCachePath>},
};

} // namespace

Dictionary selectedUserFeatures(const UserManager &users) {
    Dictionary features;
    for (const Feature &feature : kFeatures) {
        features.insert_or_assign(feature.name, feature.value(users));
    }
    return features;
}

} // namespace quillmark::ctl
