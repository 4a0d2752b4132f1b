#pragma once

#include "support/Lines.h"

#include <map>
#include <mutex>

namespace quillmark::test {

/// What the fakes were asked, in order. An operation can be told to fail at its n-th call.
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
        const auto failing = m_callsUntilFailure.find(operation);
        return failing != m_callsUntilFailure.end() && --failing->second == 0;
    }
    void failAt(const std::string &operation, int nth) { m_callsUntilFailure[operation] = nth; }
    const Lines &calls() const { return m_calls; }
    void clear() { m_calls.clear(); }

private:
    std::mutex m_mutex;
    Lines m_calls;
    std::map<std::string, int, std::less<>> m_callsUntilFailure; ///< by operation
};

/// A fake that tells what it is asked.
class Recorder {
public:
    explicit Recorder(Transcript &transcript) : m_transcript(transcript) {}

protected:
    void record(const std::string &call) const { m_transcript.record(call); }
    bool recordOrFail(const std::string &call, std::string_view operation) const {
        return m_transcript.recordOrFail(call, operation);
    }
    Transcript &transcript() const { return m_transcript; }

private:
    Transcript &m_transcript;
};

} // namespace quillmark::test
