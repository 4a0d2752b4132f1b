#include "platform/linux/keyring/module/SecretService.h"

#include "platform/Keychain.h"

#include <algorithm>
#include <mutex>

namespace quillmark {

namespace {

constexpr const char *kBusName = "org.freedesktop.secrets";

/// The errors that say something about the keyring. Every other one means that it can't be asked now.
std::int32_t statusOf(const GError *problem) {
    struct Row {
        const char *error;
        std::int32_t status;
    };
    static constexpr Row kStatuses[] = {
        {"org.freedesktop.Secret.Error.IsLocked", kKeychainInteractionNotAllowed},
        {"org.freedesktop.Secret.Error.NoSuchObject", kKeychainItemNotFound},
        {"org.freedesktop.DBus.Error.UnknownObject", kKeychainItemNotFound},
        {"org.freedesktop.DBus.Error.UnknownMethod", kKeychainItemNotFound}, // of an object that is not there, for many
    };
    char *const name = g_dbus_error_get_remote_error(problem);
    const auto *const row = std::find_if(std::begin(kStatuses), std::end(kStatuses),
                                         [name](const Row &each) { return g_strcmp0(each.error, name) == 0; });
    g_free(name);
    return row != std::end(kStatuses) ? row->status : kKeychainNotAvailable;
}

/// The session that secrets are encrypted for. To open one takes an exchange of keys, so it is kept for the next
/// secret.
class KeptSession {
public:
    std::shared_ptr<SecretService> get() {
        const std::scoped_lock lock(m_mutex);
        return m_session;
    }
    /// A new one, or null.
    std::shared_ptr<SecretService> open(GCancellable *cancellable) {
        std::shared_ptr<SecretService> session(
            secret_service_open_sync(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, cancellable, nullptr),
            [](SecretService *service) { g_clear_object(&service); });
        const std::scoped_lock lock(m_mutex);
        m_session = session;
        return session;
    }

private:
    std::mutex m_mutex;
    std::shared_ptr<SecretService> m_session;
};

KeptSession &keptSession() {
    static auto &instance = *new KeptSession; // never destroyed: other threads may ask until the very end
    return instance;
}

} // namespace

SecretServiceConnection::SecretServiceConnection(GCancellable *cancellable)
    : m_connection(g_bus_get_sync(G_BUS_TYPE_SESSION, cancellable, nullptr)) {
    if (m_connection != nullptr) {
        // Else the process would be ended when its bus ends.
        g_dbus_connection_set_exit_on_close(m_connection.get(), FALSE);
    }
}

SecretServiceConnection::Reply SecretServiceConnection::call(const char *objectPath, const char *method,
                                                             GVariant *arguments, const char *replyType,
                                                             GCancellable *cancellable) const {
    const Value owned(arguments != nullptr ? g_variant_ref_sink(arguments) : nullptr);
    if (m_connection == nullptr) {
        return {kKeychainNotAvailable, nullptr};
    }
    const std::string qualified(method);
    const std::size_t dot = qualified.rfind('.');
    GError *error = nullptr;
    GVariant *const value = g_dbus_connection_call_sync(
        m_connection.get(), kBusName, objectPath, qualified.substr(0, dot).c_str(), qualified.c_str() + dot + 1,
        owned.get(), G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE, -1, cancellable, &error);
    const Problem problem(error);
    return {problem != nullptr ? statusOf(problem.get()) : 0, Value(value)};
}

SecretServiceConnection::Reply SecretServiceConnection::callWithSession(const char *objectPath, const char *method,
                                                                        const Arguments &arguments,
                                                                        const char *replyType,
                                                                        GCancellable *cancellable) {
    const auto callWith = [&](std::shared_ptr<SecretService> session) -> Reply {
        m_session = std::move(session);
        const char *const path = m_session != nullptr ? secret_service_get_session_dbus_path(m_session.get()) : nullptr;
        return path != nullptr ? call(objectPath, method, arguments(path), replyType, cancellable)
                               : Reply{kKeychainNotAvailable, nullptr};
    };
    if (m_connection == nullptr) {
        return {kKeychainNotAvailable, nullptr};
    }
    if (auto session = keptSession().get(); session != nullptr) {
        // The service may be another than the one that it was opened with; then it is of no use any more.
        if (Reply reply = callWith(std::move(session)); reply.status != kKeychainNotAvailable) {
            return reply;
        }
    }
    return callWith(keptSession().open(cancellable));
}

GVariant *SecretServiceConnection::encoded(std::string_view data) const {
    SecretValue *const value = secret_value_new(data.data(), static_cast<gssize>(data.size()), "text/plain");
    GVariant *const secret = secret_service_encode_dbus_secret(m_session.get(), value);
    secret_value_unref(value);
    return secret;
}

bool SecretServiceConnection::decode(GVariant *tuple, std::string &data) const {
    const Value secret(g_variant_get_child_value(tuple, 0));
    SecretValue *const value = secret_service_decode_dbus_secret(m_session.get(), secret.get());
    if (value == nullptr) {
        return false;
    }
    gsize length = 0;
    const char *const bytes = secret_value_get(value, &length);
    data.assign(bytes, length);
    secret_value_unref(value);
    return true;
}

} // namespace quillmark
