#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace quillmark {

/// Statuses of the platform's keychain services; 0 is success.
inline constexpr std::int32_t kKeychainWrongParameter = -50;
inline constexpr std::int32_t kKeychainUserCanceled = -128;
/// There is no keychain service, or it does not answer in time.
inline constexpr std::int32_t kKeychainNotAvailable = -25291;
inline constexpr std::int32_t kKeychainAuthFailed = -25293;
/// The only status that means that there is no such item.
inline constexpr std::int32_t kKeychainItemNotFound = -25300;
inline constexpr std::int32_t kKeychainNoDefaultKeychain = -25307;
/// The keychain is locked, and nobody is asked to unlock it.
inline constexpr std::int32_t kKeychainInteractionNotAllowed = -25308;
/// What an item holds can't be made out.
inline constexpr std::int32_t kKeychainDecode = -26275;

/// Generic passwords, as the platform's keychain services keep them: each has a service and an account, and holds any
/// bytes. Texts are in UTF-8. Operations give a status, never ask the user, and take any thread's calls.
class Keychain {
public:
    /// An item that was found.
    class Item {
    public:
        virtual ~Item() = default;

        virtual std::int32_t copyContent(std::string &data) = 0;
        virtual std::int32_t modifyContent(std::string_view data) = 0;
        virtual std::int32_t remove() = 0;
    };

    virtual ~Keychain() = default;

    /// \param item receives the first item with these names; its content is not read yet.
    virtual std::int32_t findGenericPassword(const std::string &service, const std::string &account,
                                             std::unique_ptr<Item> &item) = 0;
    virtual std::int32_t addGenericPassword(const std::string &service, const std::string &account,
                                            std::string_view data) = 0;
};

} // namespace quillmark
