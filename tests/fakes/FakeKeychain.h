#pragma once

#include "fakes/Transcript.h"
#include "platform/Keychain.h"

#include <map>
#include <utility>

namespace quillmark::test {

/// A keychain in memory. Calls are recorded as "SecKeychainFindGenericPassword SERVICE ACCOUNT"; one that was told to
/// fail (Transcript::failAt with the first word) gives `failure` and changes nothing.
class FakeKeychain final : public Keychain, public Recorder {
public:
    using Names = std::pair<std::string, std::string>; ///< service and account

    using Recorder::Recorder;

    std::map<Names, std::string> items;
    std::int32_t failure = kKeychainNotAvailable;
    std::int32_t status = 0; ///< what every call gives unless it is 0
    int references = 0;

    std::int32_t findGenericPassword(const std::string &service, const std::string &account,
                                     std::unique_ptr<Item> &item) override {
        const Names names(service, account);
        if (const std::int32_t fault = faultOf("SecKeychainFindGenericPassword", names); fault != 0) {
            return fault;
        }
        if (!items.contains(names)) {
            return kKeychainItemNotFound;
        }
        item = std::make_unique<FakeItem>(*this, names);
        return 0;
    }
    std::int32_t addGenericPassword(const std::string &service, const std::string &account,
                                    std::string_view data) override {
        const std::int32_t fault = faultOf("SecKeychainAddGenericPassword", {service, account});
        if (fault == 0) {
            items[{service, account}] = data;
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

        std::int32_t copyContent(std::string &data) override {
            const std::int32_t fault = m_owner.faultOf("SecKeychainItemCopyContent", m_names);
            if (fault == 0) {
                data = m_owner.items.at(m_names);
            }
            return fault;
        }
        std::int32_t modifyContent(std::string_view data) override {
            const std::int32_t fault = m_owner.faultOf("SecKeychainItemModifyContent", m_names);
            if (fault == 0) {
                m_owner.items[m_names] = data;
            }
            return fault;
        }
        std::int32_t remove() override {
            const std::int32_t fault = m_owner.faultOf("SecKeychainItemDelete", m_names);
            if (fault == 0) {
                m_owner.items.erase(m_names);
            }
            return fault;
        }

    private:
        FakeKeychain &m_owner;
        Names m_names;
    };

    std::int32_t faultOf(const char *operation, const Names &names) {
        const std::string call = std::string(operation) + ' ' + names.first + ' ' + names.second;
        const bool isFailing = recordOrFail(call, operation);
        return isFailing ? failure : status;
    }
};

} // namespace quillmark::test
