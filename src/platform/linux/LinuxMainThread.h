#pragma once

#include "platform/MainThread.h"

#include <QObject>
#include <pthread.h>
#include <thread>

namespace quillmark {

/// Posts to the event loop of the thread that made this object.
class LinuxMainThread final : public MainThread {
public:
    void post(std::function<void()> call) override {
        QMetaObject::invokeMethod(&m_context, std::move(call), Qt::QueuedConnection);
    }

    void detachNewThread(const QString &name, std::function<void()> body) override {
        std::thread([name, body = std::move(body)] {
            ::pthread_setname_np(::pthread_self(), name.left(kLongestName).toUtf8().constData());
            body();
        }).detach();
    }

private:
    static constexpr qsizetype kLongestName = 15; // bytes, in the system's tools

    QObject m_context;
};

} // namespace quillmark
