#pragma once

#include "platform/MainThread.h"
#include "platform/process/Descriptor.h"
#include "platform/windows/Windows.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

namespace quillmark {

/// What a thread waits for: calls that any thread has queued, and descriptors that have something to be read. Once
/// there are windows, their library waits for all of it along with its own events.
///
/// Concurrency: post() on any thread, all else on the one that the loop belongs to.
class RunLoop final : public OtherEvents {
public:
    RunLoop();

    void post(std::function<void()> call);

    /// Waits until there is something to do, and does it.
    void turn();
    [[noreturn]] void run();

    /// Serves the inputs until each has come to its end, and all else meanwhile.
    void serve(const std::vector<Input> &inputs);

    /// From now on the windows' library waits.
    void waitWith(Windows &windows) { m_windows = &windows; }

    int descriptor() const override { return m_poll.get(); }
    void serveReady() override { serveWithin(0); }

private:
    void watch(int descriptor, std::uint64_t number) const;
    void unwatch(int descriptor, std::uint64_t number);
    void serveWithin(int milliseconds);
    void makeQueuedCall();

    Descriptor m_poll;
    Descriptor m_wakeUp; ///< counts the queued calls
    std::mutex m_mutex;
    std::deque<std::function<void()>> m_calls; ///< guarded by the mutex
    std::map<std::uint64_t, std::function<void()>> m_watches;
    std::uint64_t m_lastNumber = 0; ///< that of the wake-up
    Windows *m_windows = nullptr;
};

} // namespace quillmark
