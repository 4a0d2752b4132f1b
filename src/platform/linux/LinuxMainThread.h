#pragma once

#include "platform/MainThread.h"
#include "platform/ThreadName.h"

#include <QObject>
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
            nameCurrentThread(name);
            body();
        }).detach();
    }

private:
    QObject m_context;
};

} // namespace quillmark
