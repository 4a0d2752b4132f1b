#pragma once

#include "platform/linux/bus/Gio.h"

#include <cstdint>
#include <functional>
#include <libsecret/secret.h>
#include <string>
#include <string_view>

namespace quillmark {

/// Hands secrets to the Secret Service on a bus and takes them back, encrypted on the way. Each call says how long it
/// may last by what cancels it, and gives a status of the keychain. Nothing here makes the service ask the user.
///
/// libsecret's own operations answer with a dialog where a keyring is locked; only its encryption is used here.
class SecretServiceConnection {
public:
    /// What a method answers with: a status, and when that is 0 a tuple.
    struct Reply {
        std::int32_t status = 0;
        Value value;
    };

    explicit SecretServiceConnection(GCancellable *cancellable);

    /// \param arguments a new tuple, or null for none. \param replyType a tuple's type.
    Reply call(const char *objectPath, const char *method, GVariant *arguments, const char *replyType,
               GCancellable *cancellable) const;

    /// The arguments of a method, a new tuple, for a session at that object path.
    using Arguments = std::function<GVariant *(const char *sessionPath)>;
    /// A call with a secret in it or in its answer.
    Reply callWithSession(const char *objectPath, const char *method, const Arguments &arguments, const char *replyType,
                          GCancellable *cancellable);

    /// A secret for a message of callWithSession(): it may be asked for by `arguments` alone.
    GVariant *encoded(std::string_view data) const;
    /// Takes the secret out of the answer of callWithSession(). \returns false when it can't be made out.
    bool decode(GVariant *tuple, std::string &data) const;

private:
    Connection m_connection;
    std::shared_ptr<SecretService> m_session; ///< of the last callWithSession()
};

} // namespace quillmark
