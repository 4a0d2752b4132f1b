#pragma once

#include <QString>

namespace quillmark {

/// A new random UUID as 36 characters, in upper case.
QString UUIDString();

} // namespace quillmark
