#include "platform/linux/KeyringModule.h"

#include "platform/Problem.h"
#include "platform/linux/Keyring.h"
#include "platform/linux/PlugIn.h"
#include "platform/linux/SessionBusAddress.h"

namespace quillmark {

qint32 KeyringModule::findGenericPassword(const QString &service, const QString &account, std::unique_ptr<Item> &item) {
    Keychain *const keyring = open();
    return keyring != nullptr ? keyring->findGenericPassword(service, account, item) : kKeychainNotAvailable;
}

qint32 KeyringModule::addGenericPassword(const QString &service, const QString &account, const QByteArray &data) {
    Keychain *const keyring = open();
    return keyring != nullptr ? keyring->addGenericPassword(service, account, data) : kKeychainNotAvailable;
}

Keychain *KeyringModule::open() {
    std::call_once(m_isTried, [this] {
        if (sessionBusAddress().isEmpty()) {
            return;
        }
        m_privateMemory.emplace();
        QString obstacle;
        void *const symbol = plugInSymbol(m_bundle, "libquillmark-keyring.so", kOpenKeyringSymbol, obstacle);
        if (auto *const openKeyring = reinterpret_cast<QuillmarkOpenKeyring *>(symbol)) {
            m_keyring = openKeyring();
        } else {
            reportProblem(QStringLiteral("The keyring can't be asked: %1").arg(obstacle));
        }
    });
    return m_keyring;
}

} // namespace quillmark
