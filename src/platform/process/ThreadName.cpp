#include "platform/process/ThreadName.h"

#include <pthread.h>

namespace quillmark {

namespace {
thread_local std::optional<std::string> threadName;
} // namespace

const std::optional<std::string> &currentThreadName() { return threadName; }

void nameCurrentThread(const std::optional<std::string> &name) {
    constexpr size_t kSystemLimit = 15;
    threadName = name;
    ::pthread_setname_np(::pthread_self(), name.value_or("").substr(0, kSystemLimit).c_str());
}

} // namespace quillmark
