#pragma once

#include "platform/Keychain.h"

namespace quillmark {

/// The keychain over the Secret Service on the session's bus, which there has to be: a bus would be started otherwise.
/// It lives as long as the process.
using QuillmarkOpenKeyring = Keychain *();
inline constexpr const char *kOpenKeyringSymbol = "quillmarkOpenKeyring";

} // namespace quillmark
