#pragma once

#include <optional>
#include <string>

namespace quillmark {

class Bundle;

/// The address of a symbol in one of a bundle's plug-ins, which is loaded for it and never unloaded: the libraries
/// behind the plug-ins don't survive that.
/// \param obstacle receives the reason when there is none, as a part of a sentence. \returns null then.
void *plugInSymbol(const Bundle &bundle, const char *fileName, const char *symbol, std::string &obstacle);

/// Where the session's bus listens; nothing when the session has none. The bus libraries would start one of their own
/// then.
std::optional<std::string> sessionBusAddress();

} // namespace quillmark
