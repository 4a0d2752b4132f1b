#include "utils/CurrentThread.h"

#include "platform/Platform.h"
#include "platform/SystemInfo.h"

#include <pthread.h>

namespace quillmark {

namespace {

thread_local std::string logPrefix;

std::string numberPrefix() { return "[0x" + QByteArray::number(currentThreadId(), 16).toStdString() + "] "; }

} // namespace

quint32 currentThreadId() { return platform().systemInfo.currentThreadNumber(); }

void setCurrentThreadName(const QString &name) {
    logPrefix = name.isNull() ? numberPrefix() : '[' + name.toStdString() + "] ";
    constexpr qsizetype kSystemLimit = 15; // bytes of a thread's name, on Linux
    ::pthread_setname_np(::pthread_self(), name.toUtf8().left(kSystemLimit).constData());
}

const std::string &currentThreadLogPrefix() {
    if (logPrefix.empty()) {
        logPrefix = numberPrefix();
    }
    return logPrefix;
}

} // namespace quillmark
