#include "utils/CurrentThread.h"

#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "platform/process/ThreadName.h"

#include <fmt/format.h>

namespace quillmark {

namespace {

thread_local std::string logPrefix; // made at the first line

std::string numberPrefix() { return fmt::format("[{:#x}] ", currentThreadId()); }

} // namespace

std::uint32_t currentThreadId() { return platform().systemInfo.currentThreadNumber(); }

void setCurrentThreadName(const std::optional<std::string> &name) {
    nameCurrentThread(name);
    logPrefix.clear();
}

const std::string &currentThreadLogPrefix() {
    if (logPrefix.empty()) {
        const auto &name = currentThreadName();
        logPrefix = name ? '[' + *name + "] " : numberPrefix();
    }
    return logPrefix;
}

} // namespace quillmark
