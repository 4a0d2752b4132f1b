#pragma once

#include "platform/values/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

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
    /// A user's name, which may be absent, or another text of that kind.
    using OptionalText = std::optional<std::string_view>;

    static KeychainManager &sharedManager();
    /// The service's name is a text of `strings`.
    KeychainManager(Keychain &keychain, LocalizedStrings &strings);

    /// \name Account operations
    /// What has nothing to change, or no item to change, writes nothing.

    /// The account's password, absent when there is none. A document without a password gives its own text.
    /// \param keepLoggedin receives the choice when it is stored beside the password.
    std::optional<std::string> getPasswordForUser(OptionalText user, bool *keepLoggedin = nullptr);
    /// Stores the password unless it is absent, and the keep-signed-in choice when it is given; other members survive.
    /// \returns false when the user name is empty, when there is nothing to store, or when the write fails (logged).
    bool savePassword(OptionalText password, OptionalText user, std::optional<bool> keepLoggedin = std::nullopt);
    /// Deletes the account's whole item. \returns false when there was none.
    bool removePassword(OptionalText user);

    /// False when it is not stored.
    bool skipAuthForUser(OptionalText user);
    /// Changes what an account's document holds; an account without one gets none.
    void setSkipAuth(bool skipAuth, OptionalText user);
    void removeSkipAuthForUser(OptionalText user);

    bool flagExistsForKey(OptionalText flag, OptionalText user);
    bool flagForKey(OptionalText flag, OptionalText user);
    /// Like setSkipAuth().
    void setFlag(bool value, OptionalText flag, OptionalText user);
    void removeFlagForKey(OptionalText flag, OptionalText user);

    /// \returns false when the key or the user is absent, or when the write fails.
    bool saveEncryptionKey(OptionalText key, OptionalText user);
    /// Absent when there is none.
    std::optional<std::string> getEncryptionKeyForUser(OptionalText user);

    /// \name Items
    /// With the platform's statuses. An absent user name gives 0 or false, and nothing is done.

    /// \param text receives the item's data, if it is not null and the text is absent. It stays absent when the data
    /// is not UTF-8.
    std::int32_t secKeychainFindGenericPassword(std::optional<std::string> *text, OptionalText userName);
    std::int32_t secKeychainFindGenericPassword(std::optional<std::string> *text, OptionalText userName,
                                                const std::string &serviceName);
    /// \param value bytes or a text; nothing is not written, and gives 0. Any other kind is asserted against.
    std::int32_t secKeychainModifyOrAddGenericPassword(const Value &value, OptionalText userName);
    std::int32_t secKeychainModifyOrAddGenericPassword(const Value &value, OptionalText userName,
                                                       const std::string &serviceName);
    /// Deletes the first item with these names. \returns false when there is none, or when it can't be deleted.
    bool secKeychainRemoveAllItemsWithUserName(OptionalText userName);
    bool secKeychainRemoveAllItemsWithUserName(OptionalText userName, const std::string &serviceName);

    /// The product's name in the user's language.
    std::string serviceName() const;

    /// \name Base64
    /// No encryption, whatever the names say.

    static std::optional<std::string> encryptString(OptionalText string);
    /// Reads whole groups of four characters in pieces of 1024; the first piece with a wrong character ends the text.
    /// \returns nothing when the bytes are not UTF-8.
    static std::optional<std::string> decryptString(OptionalText string);

private:
    /// What came of reading an account's item.
    struct Reading {
        /// What the text says; empty when that can't be made out.
        Dictionary document() const;

        std::int32_t status = 0;
        bool isWritable = true; ///< writing the item again loses nothing
        std::optional<std::string> text;
    };
    Reading read(OptionalText user) { return read(user, serviceName()); }
    Reading read(OptionalText user, const std::string &serviceName);

    Value member(std::string_view name, OptionalText user);
    void setMember(std::string_view name, bool value, OptionalText user);
    void removeMember(std::string_view name, OptionalText user);
    std::int32_t write(const Dictionary &document, OptionalText user);

    Keychain &m_keychain;
    LocalizedStrings &m_strings;
};

} // namespace quillmark
