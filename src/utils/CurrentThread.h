#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quillmark {

/// The calling thread's number in the system's own count; the one that log lines of unnamed threads show.
std::uint32_t currentThreadId();

/// Names the calling thread, for log lines and for the system's tools. An empty name is a name; nothing takes the
/// name away.
void setCurrentThreadName(const std::optional<std::string> &name);

/// How log lines name the calling thread: "[NAME] ", or "[0xNUMBER] " without a name, as UTF-8.
const std::string &currentThreadLogPrefix();

} // namespace quillmark
