#pragma once

#include "fakes/Transcript.h"
#include "platform/Keychain.h"

#include <QMap>

namespace quillmark::test {

/// A keychain in memory. Calls are recorded as "SecKeychainFindGenericPassword SERVICE ACCOUNT"; one that was told to
/// fail (Transcript::failAt with the first word) gives `failure` and changes nothing.
class FakeKeychain final : public Keychain {
public:
    using Names = std::pair<QString, QString>; ///< service and account

    explicit FakeKeychain(Transcript &transcript) : m_transcript(transcript) {}

    QMap<Names, QByteArray> items;
    qint32 failure = kKeychainNotAvailable;
    qint32 status = 0; ///< what every call gives unless it is 0
    int references = 0;

    qint32 findGenericPassword(const QString &service, const QString &account, std::unique_ptr<Item> &item) override {
        const Names names(service, account);
        if (const qint32 fault = faultOf("SecKeychainFindGenericPassword", names); fault != 0) {
            return fault;
        }
        if (!items.contains(names)) {
            return kKeychainItemNotFound;
        }
        item = std::make_unique<FakeItem>(*this, names);
        return 0;
    }
    qint32 addGenericPassword(const QString &service, const QString &account, const QByteArray &data) override {
        const qint32 fault = faultOf("SecKeychainAddGenericPassword", {service, account});
        if (fault == 0) {
            items.insert({service, account}, data);
        }
        return fault;
    }

private:
    class FakeItem final : public Item {
    public:
        FakeItem(FakeKeychain &owner, Names names) : m_owner(owner), m_names(std::move(names)) { ++m_owner.references; }
        FakeItem(const FakeItem &) = delete;
        FakeItem &operator=(const FakeItem &) = delete;
        ~FakeItem() override { --m_owner.references; }

        qint32 copyContent(QByteArray &data) override {
            const qint32 fault = m_owner.faultOf("SecKeychainItemCopyContent", m_names);
            if (fault == 0) {
                data = m_owner.items.value(m_names);
            }
            return fault;
        }
        qint32 modifyContent(const QByteArray &data) override {
            const qint32 fault = m_owner.faultOf("SecKeychainItemModifyContent", m_names);
            if (fault == 0) {
                m_owner.items[m_names] = data;
            }
            return fault;
        }
        qint32 remove() override {
            const qint32 fault = m_owner.faultOf("SecKeychainItemDelete", m_names);
            if (fault == 0) {
                m_owner.items.remove(m_names);
            }
            return fault;
        }

    private:
        FakeKeychain &m_owner;
        Names m_names;
    };

    qint32 faultOf(const char *operation, const Names &names) {
        const QString name = QString::fromLatin1(operation);
        const bool isFailing =
            m_transcript.recordOrFail(QStringLiteral("%1 %2 %3").arg(name, names.first, names.second), name);
        return isFailing ? failure : status;
    }

    Transcript &m_transcript;
};

} // namespace quillmark::test
