#include "utils/CurrentThread.h"

#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "platform/ThreadName.h"

namespace quillmark {

namespace {

thread_local std::string logPrefix; // made at the first line

std::string numberPrefix() { return "[0x" + QByteArray::number(currentThreadId(), 16).toStdString() + "] "; }

} // namespace

quint32 currentThreadId() { return platform().systemInfo.currentThreadNumber(); }

void setCurrentThreadName(const QString &name) {
    nameCurrentThread(name);
    logPrefix.clear();
}

const std::string &currentThreadLogPrefix() {
    if (logPrefix.empty()) {
        const QString name = currentThreadName();
        logPrefix = name.isNull() ? numberPrefix() : '[' + name.toStdString() + "] ";
    }
    return logPrefix;
}

} // namespace quillmark
