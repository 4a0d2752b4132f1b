#pragma once

#include "platform/MainThread.h"
#include "platform/linux/mainthread/RunLoop.h"
#include "platform/process/ThreadName.h"

#include <thread>

namespace quillmark {

/// The main thread is the one that makes this object.
class LinuxMainThread final : public MainThread {
public:
    RunLoop &runLoop() { return m_runLoop; }

    void post(std::function<void()> call) override { m_runLoop.post(std::move(call)); }
    void runOnce() override { m_runLoop.turn(); }
    void serve(std::vector<Input> inputs) override {
        std::this_thread::get_id() == m_thread ? m_runLoop.serve(inputs) : serveAlone(std::move(inputs));
    }
    void detachNewThread(const std::string &name, std::function<void()> body) override {
        std::thread([name, body = std::move(body)] {
            nameCurrentThread(name);
            body();
        }).detach();
    }

private:
    const std::thread::id m_thread = std::this_thread::get_id();
    RunLoop m_runLoop;
};

} // namespace quillmark
