#pragma once

#include <QByteArray>
#include <gio/gio.h>
#include <memory>

namespace quillmark {

/// Gives back what GIO hands out.
struct Release {
    void operator()(GDBusConnection *connection) const { g_object_unref(connection); }
    void operator()(GVariant *value) const { g_variant_unref(value); }
    void operator()(GError *error) const { g_error_free(error); }
};
using Connection = std::unique_ptr<GDBusConnection, Release>;
using Value = std::unique_ptr<GVariant, Release>;
using Problem = std::unique_ptr<GError, Release>;

/// A connection of one's own to the bus at an address, which any thread may use; null when there is none.
inline Connection connectionTo(const QByteArray &address, GCancellable *cancellable) {
    return Connection(g_dbus_connection_new_for_address_sync(
        address.constData(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, cancellable, nullptr));
}

} // namespace quillmark
