#pragma once

#include "support/Lines.h"

#include <mutex>

namespace quillmark::test {

/// What the fakes were asked, in order. One of them can be told to fail at its n-th call.
///
/// Concurrency: recording is for any thread, all else for one.
class Transcript {
public:
    void record(const std::string &call) {
        const std::lock_guard lock(m_mutex);
        m_calls.push_back(call);
    }
    /// Records the call; \returns true when it is the one that is to fail.
    bool recordOrFail(const std::string &call, std::string_view operation) {
        record(call);
        return operation == m_failingOperation && --m_callsUntilFailure == 0;
    }
    void failAt(const std::string &operation, int nth) {
        m_failingOperation = operation;
        m_callsUntilFailure = nth;
    }
    const Lines &calls() const { return m_calls; }
    void clear() { m_calls.clear(); }

private:
    std::mutex m_mutex;
    Lines m_calls;
    std::string m_failingOperation;
    int m_callsUntilFailure = 0;
};

} // namespace quillmark::test
