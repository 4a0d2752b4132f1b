#pragma once

#include "platform/Keychain.h"
#include "platform/linux/keyring/Keyring.h"
#include "platform/linux/plugins/PlugIn.h"
#include "platform/linux/processes/PrivateMemory.h"
#include "platform/process/Problem.h"

#include <mutex>
#include <optional>

namespace quillmark {

/// The keychain by way of a bundle's keyring module, which is loaded at the first question in a session that has a bus.
/// Without the module, or without a bus, there is no keychain service.
class KeyringModule final : public Keychain {
public:
    explicit KeyringModule(const Bundle &bundle) : m_bundle(bundle) {}

    std::int32_t findGenericPassword(const std::string &service, const std::string &account,
                                     std::unique_ptr<Item> &item) override {
        Keychain *const keyring = open();
        return keyring != nullptr ? keyring->findGenericPassword(service, account, item) : kKeychainNotAvailable;
    }
    std::int32_t addGenericPassword(const std::string &service, const std::string &account,
                                    std::string_view data) override {
        Keychain *const keyring = open();
        return keyring != nullptr ? keyring->addGenericPassword(service, account, data) : kKeychainNotAvailable;
    }

private:
    Keychain *open() {
        std::call_once(m_isTried, [this] {
            if (!sessionBusAddress()) {
                return;
            }
            m_privateMemory.emplace();
            std::string obstacle;
            void *const symbol = plugInSymbol(m_bundle, "libquillmark-keyring.so", kOpenKeyringSymbol, obstacle);
            if (auto *const openKeyring = reinterpret_cast<QuillmarkOpenKeyring *>(symbol)) {
                m_keyring = openKeyring();
            } else {
                reportProblem("The keyring can't be asked: " + obstacle);
            }
        });
        return m_keyring;
    }

    const Bundle &m_bundle;
    std::once_flag m_isTried;
    std::optional<PrivateMemory> m_privateMemory; // there may be secrets in it from the first question on
    Keychain *m_keyring = nullptr;
};

} // namespace quillmark
