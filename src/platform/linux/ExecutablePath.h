#pragma once

#include <optional>
#include <string>

namespace quillmark {

/// The absolute path of the running program's file, links resolved. Where /proc is hidden it is what the program was
/// started by; nothing when that leads nowhere.
std::optional<std::string> executablePath();

} // namespace quillmark
