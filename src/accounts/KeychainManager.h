#pragma once

#include <QString>
#include <QVariantMap>
#include <optional>

namespace quillmark {

class Keychain;
class LocalizedStrings;

/// Keeps each account's secrets and sign-in preferences in the user's keychain: one generic password per account, whose
/// data is a flat JSON document. An item of an older version, which is the bare password, becomes such a document when
/// its password is first read.
///
/// What can't be reached, since the keychain is locked, absent or silent, is neither overwritten nor deleted.
///
/// Concurrency: calls run on the caller's thread; read-modify-writes of one item are not serialised, the last write
/// wins.
class KeychainManager {
public:
    static KeychainManager &sharedManager();
    /// The service's name is a text of `strings`.
    KeychainManager(Keychain &keychain, LocalizedStrings &strings);

    /// \name Account operations
    /// Without a change to make, or an item to make it in, nothing is written.

    /// The account's password, null when there is none. A document without a password gives its own text.
    /// \param keepLoggedin receives the choice when it is stored beside the password.
    QString getPasswordForUser(const QString &user, bool *keepLoggedin = nullptr);
    /// Stores the password unless it is null, and the keep-signed-in choice when it is given; other members survive.
    /// \returns false when the user name is empty, when there is nothing to store, or when the write fails (logged).
    bool savePassword(const QString &password, const QString &user, std::optional<bool> keepLoggedin = std::nullopt);
    /// Deletes the account's whole item. \returns false when there was none.
    bool removePassword(const QString &user);

    /// False when it is not stored.
    bool skipAuthForUser(const QString &user);
    /// Changes what an account's document holds; an account without one gets none.
    void setSkipAuth(bool skipAuth, const QString &user);
    void removeSkipAuthForUser(const QString &user);

    bool flagExistsForKey(const QString &flag, const QString &user);
    bool flagForKey(const QString &flag, const QString &user);
    /// Like setSkipAuth().
    void setFlag(bool value, const QString &flag, const QString &user);
    void removeFlagForKey(const QString &flag, const QString &user);

    /// \returns false when the key or the user is null, or when the write fails.
    bool saveEncryptionKey(const QString &key, const QString &user);
    /// Null when there is none.
    QString getEncryptionKeyForUser(const QString &user);

    /// \name Items
    /// With the platform's statuses. A null user name gives 0 or false, and nothing is done.

    /// \param text receives the item's data, if it is not null and the text is; it stays null when the data is no
    /// UTF-8.
    qint32 secKeychainFindGenericPassword(QString *text, const QString &userName);
    qint32 secKeychainFindGenericPassword(QString *text, const QString &userName, const QString &serviceName);
    /// \param value a QByteArray or a QString; a null one is not written, and gives 0. Any other kind is asserted
    /// against.
    qint32 secKeychainModifyOrAddGenericPassword(const QVariant &value, const QString &userName);
    qint32 secKeychainModifyOrAddGenericPassword(const QVariant &value, const QString &userName,
                                                 const QString &serviceName);
    /// Deletes the first item with these names. \returns false when there is none, or when it can't be deleted.
    bool secKeychainRemoveAllItemsWithUserName(const QString &userName);
    bool secKeychainRemoveAllItemsWithUserName(const QString &userName, const QString &serviceName);

    /// The product's name in the user's language.
    QString serviceName() const;

    /// \name Base64
    /// No encryption, whatever the names say.

    static QString encryptString(const QString &string);
    /// Reads whole groups of four characters in pieces of 1024; the first piece with a wrong character ends the text.
    /// \returns null when the bytes are no UTF-8.
    static QString decryptString(const QString &string);

private:
    /// What came of reading an account's item.
    struct Reading {
        qint32 status = 0;
        bool isWritable = true; ///< to write the item anew loses nothing
        QString text;
    };
    Reading read(const QString &userName, const QString &serviceName);

    struct Stored {
        qint32 status = 0;
        bool isWritable = true;
        QVariantMap document; ///< empty when there is none, or none that can be parsed
    };
    Stored storedFor(const QString &user);

    QVariant member(const QString &name, const QString &user);
    void setMember(const QString &name, bool value, const QString &user);
    void removeMember(const QString &name, const QString &user);
    qint32 write(const QVariantMap &document, const QString &user);

    Keychain &m_keychain;
    LocalizedStrings &m_strings;
};

} // namespace quillmark
