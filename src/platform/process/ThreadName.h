#pragma once

#include <optional>
#include <string>

namespace quillmark {

/// The calling thread's name, when it has one.
const std::optional<std::string> &currentThreadName();

/// Names the calling thread, for the log and for the system's tools, which show no more than 15 bytes of it; nothing
/// takes the name away.
void nameCurrentThread(const std::optional<std::string> &name);

} // namespace quillmark
