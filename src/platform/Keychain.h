#pragma once

#include <QByteArray>
#include <QString>
#include <memory>

namespace quillmark {

/// Statuses of the platform's keychain services; 0 is success.
inline constexpr qint32 kKeychainWrongParameter = -50;
inline constexpr qint32 kKeychainUserCanceled = -128;
/// There is no keychain service, or it does not answer in time.
inline constexpr qint32 kKeychainNotAvailable = -25291;
inline constexpr qint32 kKeychainAuthFailed = -25293;
/// The only status that means that there is no such item.
inline constexpr qint32 kKeychainItemNotFound = -25300;
inline constexpr qint32 kKeychainNoDefaultKeychain = -25307;
/// The keychain is locked, and nobody is asked to unlock it.
inline constexpr qint32 kKeychainInteractionNotAllowed = -25308;
/// What an item holds can't be made out.
inline constexpr qint32 kKeychainDecode = -26275;

/// Generic passwords, as the platform's keychain services keep them: each has a service and an account, and holds any
/// bytes. Operations give a status, never ask the user, and take any thread's calls.
class Keychain {
public:
    /// An item that was found.
    class Item {
    public:
        Item() = default;
        Item(const Item &) = delete;
        Item &operator=(const Item &) = delete;
        virtual ~Item() = default;

        virtual qint32 copyContent(QByteArray &data) = 0;
        virtual qint32 modifyContent(const QByteArray &data) = 0;
        virtual qint32 remove() = 0;
    };

    Keychain() = default;
    Keychain(const Keychain &) = delete;
    Keychain &operator=(const Keychain &) = delete;
    virtual ~Keychain() = default;

    /// \param item receives the first item with these names; its content is not read yet.
    virtual qint32 findGenericPassword(const QString &service, const QString &account, std::unique_ptr<Item> &item) = 0;
    virtual qint32 addGenericPassword(const QString &service, const QString &account, const QByteArray &data) = 0;
};

} // namespace quillmark
