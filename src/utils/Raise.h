#pragma once

#include "utils/Format.h"

namespace quillmark {

/// True while a debugger is attached to this process.
bool IsDebuggerPresent();

/// Raises an Exception of that name, its reason formatted from the one argument. Under a debugger it stops at a trap
/// instead. Never returns.
[[noreturn]] void __raiseException1(const std::string &name, const FormatText &format, const FormatArgument &argument);

/// Stops in the attached debugger; ends the process when nothing stops it.
[[noreturn]] void trapIntoDebugger();

} // namespace quillmark
