#pragma once

#include "platform/Keychain.h"
#include "platform/linux/PrivateMemory.h"

#include <mutex>
#include <optional>

namespace quillmark {

class Bundle;

/// The keychain by way of a bundle's keyring module, which is loaded at the first question in a session that has a bus.
/// Without the module, or without a bus, there is no keychain service.
class KeyringModule final : public Keychain {
public:
    explicit KeyringModule(const Bundle &bundle) : m_bundle(bundle) {}

    std::int32_t findGenericPassword(const std::string &service, const std::string &account,
                                     std::unique_ptr<Item> &item) override;
    std::int32_t addGenericPassword(const std::string &service, const std::string &account,
                                    std::string_view data) override;

private:
    Keychain *open();

    const Bundle &m_bundle;
    std::once_flag m_isTried;
    std::optional<PrivateMemory> m_privateMemory; // there may be secrets in it from the first question on
    Keychain *m_keyring = nullptr;
};

} // namespace quillmark
