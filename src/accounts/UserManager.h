#pragma once

#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <functional>
#include <optional>

namespace quillmark {

class KeychainManager;
class UserDefaults;
struct Platform;

/// The settings of one account, by the keys of its family in the key list.
using UserRecord = QVariantMap;

/// The accounts that are known here and the settings of each, kept in the preferences; their secrets are kept in the
/// keychain and never reach a record. Objects hold nothing of their own, so any number may exist, and a copy is as
/// good.
///
/// User names are compared exactly. Entries of the list that are no records, and names that are no texts, belong to
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
        virtual void cacheStays(const QString & /*path*/, const QString & /*reason*/) {}
    };

    /// Over the installed platform and the keychain of this process.
    UserManager();
    UserManager(const Platform &platform, KeychainManager &keychain) : m_platform(&platform), m_keychain(&keychain) {}

    /// \name Records

    /// The first record of that name; for an unknown user a new one, which holds the defaults and is not stored.
    UserRecord userWithUserName(const QString &userName) const;
    /// In the order in which they were last saved. Empty, too, when what is stored is no list.
    QVariantList userList() const;
    bool doesUserKeyExists(const QString &userName) const;
    /// The six defaults of a new record.
    static UserRecord setupUserDefaults();

    /// The record's value; invalid when it is absent. "Password" and "State" come from the keychain, and
    /// "ConnectionCount" is always 1, whatever the record holds.
    QVariant objectForKey(const QString &key, const QString &userName) const;
    /// The same, but for the text "1" for "ConnectionCount". Nothing is converted.
    QVariant objectForKeyAsString(const QString &key, const QString &userName) const;
    /// A number, or the number that a text begins with, else 0; the nearest one when it is too large. The default when
    /// the value is absent or of another kind.
    qint32 objectForKeyAsInt(const QString &key, const QString &userName, qint32 defaultValue) const;
    qint64 objectForKeyAsLong(const QString &key, const QString &userName, qint64 defaultValue) const;
    /// The record's value. Nothing is converted.
    QVariant objectForKeyAsArray(const QString &key, const QString &userName) const;

    /// Sets a value of the user's record, of a new one for an unknown user, and saves it; "Password" and "State" go to
    /// the keychain alone. An invalid value changes nothing.
    ///
    /// \param updateMono means something to the core program, and nothing here; as in the operations below.
    /// \returns false when it could not be stored, as the operations below do.
    bool setObject(const QVariant &value, const QString &key, const QString &userName, bool updateMono = true);
    /// Leaves the keychain alone.
    bool removeObjectForKey(const QString &key, const QString &userName, bool updateMono = true);
    /// Puts the record at the end of the list, in the place of all of that name, and saves the preferences.
    bool saveUser(const UserRecord &record, const QString &userName, bool updateMono = true);
    /// Gives every record of that account a new name.
    bool updateUserWithUsername(const QString &newName, qint64 account);

    /// \name The selected user
    /// Who signed in last.

    QString lastUsedUserName() const;                     ///< empty when there is none
    void setLastUsedUserName(const QString &userName);    ///< null for none
    QString previousAddUserName() const;                  ///< null when there is none
    void setPreviousAddUserName(const QString &userName); ///< null for none

    qint32 selectedUserAccountType() const;
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
    // Null when absent.
    QString selectedUserClientIdent() const;
    QString selectedUserCacheLocation() const;
    QString selectedUserCacheName() const;
    QString selectedUserCachePath() const;

    /// LOCATION/.QM/NAME; null when the record lacks one of both.
    QString userCachePath(const QString &userName) const;

    /// \name Removal and housekeeping

    /// Removes all records of the name on a thread of its own, and deletes the user's cache before if that is wished.
    /// The keychain's item stays. So does a cache that no folder of the user's below LOCATION/.QM holds.
    void removeUser(const QString &userName, bool removeCache, RemovalObserver *sender = nullptr) const;
    /// Removes the records that have no "UserName" and, unless the name is null, those of that name.
    bool removeIncompleteUser(const QString &userName);
    bool load() { return removeIncompleteUser(QString()); }
    /// Writes the preferences to disk. What can't be written (logged) stays as it was set in this process.
    bool save();

private:
    QVariant recordValue(const QString &key, const QString &userName) const;
    QString recordText(const QString &key, const QString &userName) const;
    qint32 selectedInt(const QString &key, qint32 defaultValue) const;
    /// What could not be removed, and why.
    struct Remainder {
        QString path;
        QString reason;
    };
    std::optional<Remainder> removeUserAsync(const QString &userName, bool removeCache);
    std::optional<Remainder> removeCacheOf(const QString &userName) const;
    /// Runs a change while nobody else makes one, and saves the preferences. \returns false, logged, as save() does,
    /// and when what is stored can't be read: then the change is not run.
    bool change(const std::function<void(UserDefaults &defaults)> &changeOfValues) const;
    bool changeList(const std::function<void(QVariantList &list)> &changeOfList) const;
    /// Removes those entries, and unselects the user if the name is his.
    bool removeEntries(const std::function<bool(const QVariant &entry)> &isToGo, const QString &userName);

    const Platform *m_platform;
    KeychainManager *m_keychain;
};

} // namespace quillmark
