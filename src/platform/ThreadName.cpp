#include "platform/ThreadName.h"

#include <pthread.h>

namespace quillmark {

namespace {
thread_local QString threadName;
} // namespace

QString currentThreadName() { return threadName; }

void nameCurrentThread(const QString &name) {
    constexpr qsizetype kSystemLimit = 15;
    threadName = name;
    ::pthread_setname_np(::pthread_self(), name.toUtf8().left(kSystemLimit).constData());
}

} // namespace quillmark
