#pragma once

#include <optional>
#include <string>

namespace quillmark {

/// Where the session's bus listens; nothing when the session has none. The bus libraries would start one of their own
/// then.
std::optional<std::string> sessionBusAddress();

} // namespace quillmark
