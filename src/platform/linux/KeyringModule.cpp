#include "platform/linux/KeyringModule.h"

#include "platform/Problem.h"
#include "platform/linux/Keyring.h"
#include "platform/linux/PlugIn.h"

namespace quillmark {

std::int32_t KeyringModule::findGenericPassword(const std::string &service, const std::string &account,
                                                std::unique_ptr<Item> &item) {
    Keychain *const keyring = open();
    return keyring != nullptr ? keyring->findGenericPassword(service, account, item) : kKeychainNotAvailable;
}

std::int32_t KeyringModule::addGenericPassword(const std::string &service, const std::string &account,
                                               std::string_view data) {
    Keychain *const keyring = open();
    return keyring != nullptr ? keyring->addGenericPassword(service, account, data) : kKeychainNotAvailable;
}

Keychain *KeyringModule::open() {
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

} // namespace quillmark
