#include "utils/Raise.h"

#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "utils/Exception.h"

#include <csignal>
#include <cstdlib>

namespace quillmark {

bool IsDebuggerPresent() { return platform().systemInfo.isTraced(); }

void trapIntoDebugger() {
    ::raise(SIGTRAP);
    std::abort(); // the debugger went on
}

void __raiseException1(const std::string &name, const FormatText &format, const FormatArgument &argument) {
    if (IsDebuggerPresent()) {
        trapIntoDebugger();
    }
    const auto reason = tryFormat(format, FormatArguments(&argument, 1));
    throw Exception(name, reason.value_or(std::string(format.view())));
}

} // namespace quillmark
