#pragma once

#include <cstdint>

namespace quillmark {

/// Logs "ASSERTION ERROR: …" and ends the process: at a trap under a debugger, else by abort.
[[noreturn]] void __assert2(const char *expression, const char *file, std::int32_t line);

} // namespace quillmark

/// For impossible states and broken preconditions. There is no switch to turn it off.
/// \param expression what must hold, as text for the log. \param source the name of the unit.
#define QUILLMARK_ASSERT(condition, expression, source)                                                                \
    ((condition) ? static_cast<void>(0) : ::quillmark::__assert2(expression, source, __LINE__))
