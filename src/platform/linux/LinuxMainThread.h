#pragma once

#include "platform/MainThread.h"

#include <QObject>

namespace quillmark {

/// Posts to the event loop of the thread that made this object.
class LinuxMainThread final : public MainThread {
public:
    void post(std::function<void()> call) override {
        QMetaObject::invokeMethod(&m_context, std::move(call), Qt::QueuedConnection);
    }

private:
    QObject m_context;
};

} // namespace quillmark
