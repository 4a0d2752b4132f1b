#pragma once

#include "platform/MainThread.h"

#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace quillmark::test {

/// The main thread's queue, pumped by hand.
class FakeMainThread final : public MainThread {
public:
    void post(std::function<void()> call) override {
        const std::scoped_lock lock(m_mutex);
        m_calls.push_back(std::move(call));
    }
    void runOnce() override { next()(); }
    void serve(std::vector<Input> inputs) override { serveAlone(std::move(inputs)); }
    void detachNewThread(const std::string &name, std::function<void()> body) override {
        threadNames.push_back(name);
        threads.push_back(std::move(body));
    }
    std::vector<std::string> threadNames;
    std::vector<std::function<void()>> threads; ///< their bodies, for the test to run

    /// Makes the queued calls, those included that they queue themselves. \returns how many there were.
    int pump() {
        int made = 0;
        while (auto call = next()) {
            call();
            ++made;
        }
        return made;
    }

private:
    std::function<void()> next() {
        const std::scoped_lock lock(m_mutex);
        if (m_calls.empty()) {
            return {};
        }
        auto call = std::move(m_calls.front());
        m_calls.pop_front();
        return call;
    }

    std::mutex m_mutex;
    std::deque<std::function<void()>> m_calls;
};

} // namespace quillmark::test
