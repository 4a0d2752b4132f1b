#pragma once

#include "platform/Keychain.h"

namespace quillmark {

// What the keyring module and the core agree on.

/// The keychain over the Secret Service on the bus at an address. It is made once and never destroyed.
using QuillmarkOpenKeyring = Keychain *(const QByteArray &busAddress);
inline constexpr const char *kOpenKeyringSymbol = "quillmarkOpenKeyring";

} // namespace quillmark
