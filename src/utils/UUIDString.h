#pragma once

#include <string>

namespace quillmark {

/// A new random UUID as 36 characters, in upper case.
std::string UUIDString();

} // namespace quillmark
