#pragma once

#include <chrono>
#include <condition_variable>
#include <gio/gio.h>
#include <mutex>
#include <thread>

namespace quillmark {

/// Cancels calls that last too long: some have no time limit of their own.
class TimeLimit {
public:
    /// For one question to the session or the keyring, however many calls that takes.
    static constexpr std::chrono::milliseconds kLimit{3000};

    TimeLimit()
        : m_cancellable(g_cancellable_new()), m_watch([this](const std::stop_token &isDone) {
              std::mutex mutex;
              std::unique_lock lock(mutex);
              std::condition_variable_any sleep;
              sleep.wait_for(lock, isDone, kLimit, [] { return false; });
              if (!isDone.stop_requested()) {
                  g_cancellable_cancel(m_cancellable);
              }
          }) {}
    TimeLimit(const TimeLimit &) = delete;
    TimeLimit &operator=(const TimeLimit &) = delete;
    ~TimeLimit() {
        m_watch.request_stop();
        m_watch.join();
        g_object_unref(m_cancellable);
    }

    /// To be handed to the calls.
    GCancellable *cancellable() const { return m_cancellable; }

private:
    GCancellable *m_cancellable;
    std::jthread m_watch;
};

} // namespace quillmark
