#pragma once

#include "accounts/KeychainManager.h"
#include "platform/values/Value.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillmark {

class UserDefaults;

/// The settings of one account, by the keys of its family in the key list.
using UserRecord = Dictionary;

/// The accounts that are known here and the settings of each, kept in the preferences; their secrets are kept in the
/// keychain and never reach a record. Objects hold nothing of their own, so any number may exist, and a copy is as
/// good.
///
/// User names are compared exactly. Entries of the list that are not records, and names that are not texts, belong to
/// nobody; they stay where they are until the list is cleaned, which drops all that has no "UserName".
///
/// Concurrency: any thread and any number of programs. A change reads the list, changes it and writes it while nobody
/// else does, and is refused where the list can't be read.
class UserManager {
public:
    /// What is told, on the main thread, when a user has been removed. It outlives the removal.
    class RemovalObserver {
    public:
        virtual ~RemovalObserver() = default;
        virtual void removeUserFinished() = 0;
        /// Told before it when something of a cache that was to go is still there.
        virtual void cacheStays(const std::string & /*path*/, const std::string & /*reason*/) {}
    };

    explicit UserManager(KeychainManager &keychain = KeychainManager::sharedManager()) : m_keychain(&keychain) {}

    /// \name Records

    /// The first record of that name; for an unknown user a new one, which holds the defaults and is not stored.
    UserRecord userWithUserName(std::string_view userName) const;
    /// In the order in which they were last saved. Empty, too, when what is stored is not a list.
    List userList() const;
    bool doesUserKeyExists(std::optional<std::string_view> userName) const;
    /// The six defaults of a new record.
    static UserRecord setupUserDefaults();

    /// The record's value; nothing when it is absent. "Password" and "State" come from the keychain, and
    /// "ConnectionCount" is always 1, whatever the record holds.
    Value objectForKey(std::string_view key, std::string_view userName) const;
    /// The same, but for the text "1" for "ConnectionCount". Nothing is converted.
    Value objectForKeyAsString(std::string_view key, std::string_view userName) const;
    /// A number, or the number that a text begins with, else 0; the nearest one when it is too large. The default when
    /// the value is absent or of another kind.
    std::int32_t objectForKeyAsInt(std::string_view key, std::string_view userName, std::int32_t defaultValue) const;
    std::int64_t objectForKeyAsLong(std::string_view key, std::string_view userName, std::int64_t defaultValue) const;
    /// The record's value. Nothing is converted.
    Value objectForKeyAsArray(std::string_view key, std::string_view userName) const;

    /// Sets a value of the user's record, of a new one for an unknown user, and saves it; "Password" and "State" go to
    /// the keychain alone. Nothing, as a value, changes nothing.
    ///
    /// \param updateMono means something to the core program, and nothing here; as in the operations below.
    /// \returns false when it could not be stored, as the operations below do.
    bool setObject(const Value &value, std::string_view key, std::string_view userName, bool updateMono = true);
    /// Leaves the keychain alone.
    bool removeObjectForKey(std::string_view key, std::string_view userName, bool updateMono = true);
    /// Puts the record at the end of the list, in the place of all of that name, and saves the preferences.
    bool saveUser(const UserRecord &record, std::string_view userName, bool updateMono = true);
    /// Gives every record of that account a new name.
    bool updateUserWithUsername(std::string_view newName, std::int64_t account);

    /// \name The selected user
    /// Who signed in last.

    std::string lastUsedUserName() const; ///< empty when there is none
    void setLastUsedUserName(std::optional<std::string_view> userName);
    std::optional<std::string> previousAddUserName() const;
    void setPreviousAddUserName(std::optional<std::string_view> userName);

    std::int32_t selectedUserAccountType() const;
    bool isBusinessUser() const;
    bool isShowingTeamFolders() const;
    bool selectedUserShowTeamFolders() const;
    bool isConsumerSharing() const;
    bool isBusinessSharing() const;
    bool isSimplifiedWelcome() const;
    bool selectedUserAllowQMDisk() const;
    bool selectedUserEnableQMDisk() const;
    bool selectedUserHasQMDisk() const;
    bool selectedUserAllowBackup() const;
    bool selectedUserEnableBackup() const;
    bool selectedUserAllowSharing() const;
    bool selectedUserEncryptTransfers() const;
    bool selectedUserEncryptNewFiles() const;
    bool ignoreServerExclusions() const;
    bool selectedUserHaveClientIdent() const;
    // Absent where the record holds no text.
    std::optional<std::string> selectedUserClientIdent() const;
    std::optional<std::string> selectedUserCacheLocation() const;
    std::optional<std::string> selectedUserCacheName() const;
    std::optional<std::string> selectedUserCachePath() const;

    /// LOCATION/.QM/NAME; absent when the record lacks one of both.
    std::optional<std::string> userCachePath(std::string_view userName) const;

    /// \name Removal and housekeeping

    /// Removes all records of the name on a thread of its own, and deletes the user's cache before if that is wished.
    /// The keychain's item stays. So does a cache that no folder of the user's below LOCATION/.QM holds.
    void removeUser(const std::string &userName, bool removeCache, RemovalObserver *sender = nullptr) const;
    /// Removes the records that have no "UserName" and, when a name is given, those of that name.
    bool removeIncompleteUser(std::optional<std::string_view> userName);
    bool load() { return removeIncompleteUser(std::nullopt); }
    /// Writes the preferences to disk. What can't be written (logged) stays as it was set in this process.
    bool save();

private:
    /// What is stored as the user list; nothing when that is not a list.
    Value storedList() const;
    Value recordOf(std::string_view userName) const;
    Value recordValue(std::string_view key, std::string_view userName) const;
    std::optional<std::string> recordText(std::string_view key, std::string_view userName) const;
    std::int32_t selectedInt(std::string_view key, std::int32_t defaultValue) const;
    /// What could not be removed, and why.
    struct Remainder {
        std::string path;
        std::string reason;
    };
    std::optional<Remainder> removeUserAsync(const std::string &userName, bool removeCache);
    std::optional<Remainder> removeCacheOf(const std::string &userName) const;
    /// Runs a change while nobody else makes one, and saves the preferences. \returns false, logged, as save() does,
    /// and when what is stored can't be read: then the change is not run.
    bool change(const std::function<void(UserDefaults &defaults)> &changeOfValues) const;
    bool changeList(const std::function<void(List &list)> &changeOfList) const;
    /// Removes those entries, and unselects the user if the name is his.
    bool removeEntries(const std::function<bool(const Value &entry)> &isToGo, std::optional<std::string_view> userName);

    KeychainManager *m_keychain;
};

} // namespace quillmark
