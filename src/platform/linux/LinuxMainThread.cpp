#include "platform/linux/LinuxMainThread.h"

#include "platform/ThreadName.h"

namespace quillmark {

void LinuxMainThread::serve(std::vector<Input> inputs) {
    std::this_thread::get_id() == m_thread ? m_runLoop.serve(inputs) : serveAlone(std::move(inputs));
}

void LinuxMainThread::detachNewThread(const std::string &name, std::function<void()> body) {
    std::thread([name, body = std::move(body)] {
        nameCurrentThread(name);
        body();
    }).detach();
}

} // namespace quillmark
