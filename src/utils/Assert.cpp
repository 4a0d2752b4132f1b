#include "utils/Assert.h"

#include "utils/Log.h"
#include "utils/Raise.h"

#include <cstdlib>

namespace quillmark {

void __assert2(const char *expression, const char *file, std::int32_t line) {
    logError("ASSERTION ERROR: %s (file \"%s\", line %d)", expression, file, line);
    _flushLog(); // abort() writes nothing out
    if (IsDebuggerPresent()) {
        trapIntoDebugger();
    }
    std::abort();
}

} // namespace quillmark
