#pragma once

#include <string>

namespace quillmark {

class Bundle;

/// The address of a symbol in one of a bundle's plug-ins, which is loaded for it and never unloaded: the libraries
/// behind the plug-ins don't survive that.
/// \param obstacle receives the reason when there is none, as a part of a sentence. \returns null then.
void *plugInSymbol(const Bundle &bundle, const char *fileName, const char *symbol, std::string &obstacle);

} // namespace quillmark
