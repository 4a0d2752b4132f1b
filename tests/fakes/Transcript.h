#pragma once

#include <QString>
#include <QStringList>
#include <mutex>

namespace quillmark::test {

/// What the fakes were asked, in order. One of them can be told to fail at its n-th call.
///
/// Concurrency: recording is for any thread, all else for one.
class Transcript {
public:
    void record(const QString &call) {
        const std::lock_guard lock(m_mutex);
        m_calls.append(call);
    }
    /// Records the call; \returns true when it is the one that is to fail.
    bool recordOrFail(const QString &call, const QString &operation) {
        record(call);
        return operation == m_failingOperation && --m_callsUntilFailure == 0;
    }
    void failAt(const QString &operation, int nth) {
        m_failingOperation = operation;
        m_callsUntilFailure = nth;
    }
    const QStringList &calls() const { return m_calls; }
    void clear() { m_calls.clear(); }

private:
    std::mutex m_mutex;
    QStringList m_calls;
    QString m_failingOperation;
    int m_callsUntilFailure = 0;
};

} // namespace quillmark::test
