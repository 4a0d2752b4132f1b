#include "platform/linux/bus/TimeLimit.h"
#include "platform/linux/keyring/Keyring.h"
#include "platform/linux/keyring/module/SecretService.h"

#include <type_traits>

namespace quillmark {

namespace {

constexpr const char *kService = "/org/freedesktop/secrets";
constexpr const char *kDefaultCollection = "/org/freedesktop/secrets/aliases/default";
/// In the place of an object that there is not.
constexpr const char *kNoObject = "/";

using Reply = SecretServiceConnection::Reply;

/// The object path at a place in a tuple.
std::string pathIn(GVariant *tuple, gsize index) {
    const Value path(g_variant_get_child_value(tuple, index));
    return g_variant_get_string(path.get(), nullptr);
}

/// What became of a call that answers with a dialog where the keyring is locked. The dialog is not shown.
std::int32_t statusWithoutPrompt(const Reply &reply, gsize promptIndex) {
    if (reply.status != 0) {
        return reply.status;
    }
    return pathIn(reply.value.get(), promptIndex) == kNoObject ? 0 : kKeychainInteractionNotAllowed;
}

/// Whether a text is a name on the bus. A zero byte would end it, and what stands before that may name another item.
bool isName(const std::string &text) {
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

GVariant *attributesOf(const std::string &service, const std::string &account) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{ss}"));
    g_variant_builder_add(&builder, "{ss}", "service", service.c_str());
    g_variant_builder_add(&builder, "{ss}", "account", account.c_str());
    return g_variant_builder_end(&builder);
}

class KeyringItem final : public Keychain::Item {
public:
    KeyringItem(SecretServiceConnection connection, std::string path)
        : m_connection(std::move(connection)), m_path(std::move(path)) {}

    std::int32_t copyContent(std::string &data) override {
        const TimeLimit limit;
        const Reply reply = m_connection.callWithSession(
            m_path.c_str(), "org.freedesktop.Secret.Item.GetSecret",
            [](const char *session) { return g_variant_new("(o)", session); }, "((oayays))", limit.cancellable());
        if (reply.status != 0) {
            return reply.status;
        }
        return m_connection.decode(reply.value.get(), data) ? 0 : kKeychainDecode;
    }

    std::int32_t modifyContent(std::string_view data) override {
        const TimeLimit limit;
        return m_connection
            .callWithSession(
                m_path.c_str(), "org.freedesktop.Secret.Item.SetSecret",
                [&](const char *) { return g_variant_new("(@(oayays))", m_connection.encoded(data)); }, "()",
                limit.cancellable())
            .status;
    }

    std::int32_t remove() override {
        const TimeLimit limit;
        const Reply reply = m_connection.call(m_path.c_str(), "org.freedesktop.Secret.Item.Delete", nullptr, "(o)",
                                              limit.cancellable());
        return statusWithoutPrompt(reply, 0);
    }

private:
    SecretServiceConnection m_connection;
    std::string m_path;
};

/// A keyring that is locked may not even tell which items it has; a missing one has none to tell of. That nothing was
/// found is believed when new items could be put into the default keyring.
std::int32_t statusOfNothingFound(const SecretServiceConnection &connection, GCancellable *cancellable) {
    const Reply alias = connection.call(kService, "org.freedesktop.Secret.Service.ReadAlias",
                                        g_variant_new("(s)", "default"), "(o)", cancellable);
    if (alias.status != 0) {
        return kKeychainNotAvailable;
    }
    const std::string collection = pathIn(alias.value.get(), 0);
    if (collection == kNoObject) {
        return kKeychainNoDefaultKeychain;
    }
    const Reply locked =
        connection.call(collection.c_str(), "org.freedesktop.DBus.Properties.Get",
                        g_variant_new("(ss)", "org.freedesktop.Secret.Collection", "Locked"), "(v)", cancellable);
    if (locked.status != 0) {
        return kKeychainNotAvailable;
    }
    GVariant *variant = nullptr;
    g_variant_get(locked.value.get(), "(v)", &variant);
    const Value isLocked(variant);
    const bool isUnlocked =
        g_variant_is_of_type(variant, G_VARIANT_TYPE_BOOLEAN) != FALSE && g_variant_get_boolean(variant) == FALSE;
    return isUnlocked ? kKeychainItemNotFound : kKeychainInteractionNotAllowed;
}

class SecretServiceKeychain final : public Keychain {
public:
    std::int32_t findGenericPassword(const std::string &service, const std::string &account,
                                     std::unique_ptr<Item> &item) override {
        if (!isName(service) || !isName(account)) {
            return kKeychainWrongParameter;
        }
        const TimeLimit limit;
        SecretServiceConnection connection(limit.cancellable());
        const Reply found =
            connection.call(kService, "org.freedesktop.Secret.Service.SearchItems",
                            g_variant_new("(@a{ss})", attributesOf(service, account)), "(aoao)", limit.cancellable());
        if (found.status != 0) {
            return kKeychainNotAvailable;
        }
        const Value unlocked(g_variant_get_child_value(found.value.get(), 0));
        const Value locked(g_variant_get_child_value(found.value.get(), 1));
        if (g_variant_n_children(unlocked.get()) > 0) {
            std::string path = pathIn(unlocked.get(), 0);
            item = std::make_unique<KeyringItem>(std::move(connection), std::move(path));
            return 0;
        }
        return g_variant_n_children(locked.get()) > 0 ? kKeychainInteractionNotAllowed
                                                      : statusOfNothingFound(connection, limit.cancellable());
    }

    std::int32_t addGenericPassword(const std::string &service, const std::string &account,
                                    std::string_view data) override {
        if (!isName(service) || !isName(account)) {
            return kKeychainWrongParameter;
        }
        const TimeLimit limit;
        SecretServiceConnection connection(limit.cancellable());
        const auto arguments = [&](const char *) {
            GVariantBuilder properties;
            g_variant_builder_init(&properties, G_VARIANT_TYPE("a{sv}"));
            g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Item.Label",
                                  g_variant_new_string(service.c_str()));
            g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Item.Attributes",
                                  attributesOf(service, account));
            // Replaces an item that another process has added meanwhile, so that there are never two.
            constexpr gboolean kIsReplacing = TRUE;
            return g_variant_new("(a{sv}@(oayays)b)", &properties, connection.encoded(data), kIsReplacing);
        };
        const Reply created = connection.callWithSession(
            kDefaultCollection, "org.freedesktop.Secret.Collection.CreateItem", arguments, "(oo)", limit.cancellable());
        const std::int32_t status = statusWithoutPrompt(created, 1);
        return status == kKeychainItemNotFound ? kKeychainNoDefaultKeychain : status;
    }
};

} // namespace

} // namespace quillmark

extern "C" [[gnu::visibility("default")]] quillmark::Keychain *quillmarkOpenKeyring() {
    static auto *const keyring = new quillmark::SecretServiceKeychain;
    return keyring;
}

static_assert(std::is_same_v<decltype(quillmarkOpenKeyring), quillmark::QuillmarkOpenKeyring>);
