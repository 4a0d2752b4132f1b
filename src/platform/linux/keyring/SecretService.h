#pragma once

#include "platform/linux/bus/Gio.h"

#include <QByteArray>
#include <libsecret/secret.h>

namespace quillmark {

/// Hands secrets to the Secret Service on a bus and takes them back, encrypted on the way. Each call says how long it
/// may last by what cancels it, and gives a status of the keychain. Nothing here makes the service ask the user.
///
/// libsecret's own operations answer with a dialog where a keyring is locked; only its encryption is used here.
class SecretServiceConnection {
public:
    /// What a method answers with: a status, and when that is 0 a tuple.
    struct Reply {
        qint32 status = 0;
        Value value;
    };

    explicit SecretServiceConnection(GCancellable *cancellable);

    /// \param arguments a new tuple, or null for none. \param replyType a tuple's type.
    Reply call(const char *objectPath, const char *method, GVariant *arguments, const char *replyType,
               GCancellable *cancellable) const;

    /// The object path of the session that secrets are encrypted for; null when there is none.
    const char *sessionPath(GCancellable *cancellable);
    /// A secret for a message. sessionPath() comes first.
    GVariant *encoded(const QByteArray &data) const;
    /// Takes the secret out of a tuple. sessionPath() comes first. \returns false when it can't be made out.
    bool decode(GVariant *tuple, QByteArray &data) const;

private:
    struct Unref {
        void operator()(SecretService *service) const { g_object_unref(service); }
    };

    Connection m_connection;
    std::unique_ptr<SecretService, Unref> m_service;
};

} // namespace quillmark
