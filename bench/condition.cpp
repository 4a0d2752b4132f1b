// A turn to another thread and back: a condition lock beside the standard library's condition variable.

#include "utils/ConditionLock+Waitable.h"

#include <benchmark/benchmark.h>
#include <thread>

using namespace quillmark;

namespace {

constexpr qint64 kMine = 0;
constexpr qint64 kTheirs = 1;
constexpr qint64 kEnd = 2;

/// The same hand-over with nothing but the standard library, written as one writes it for a single purpose.
class PlainTurn {
public:
    void give(qint64 turn) {
        {
            const std::scoped_lock lock(m_mutex);
            m_turn = turn;
        }
        m_changed.notify_one();
    }
    qint64 waitForOtherThan(qint64 turn) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this, turn] { return m_turn != turn; });
        return m_turn;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    qint64 m_turn = kMine;
};

void peer(benchmark::State &state) {
    PlainTurn turn;
    std::thread other([&turn] {
        while (turn.waitForOtherThan(kMine) != kEnd) {
            turn.give(kMine);
        }
    });
    for ([[maybe_unused]] auto run : state) {
        turn.give(kTheirs);
        turn.waitForOtherThan(kTheirs);
    }
    turn.give(kEnd);
    other.join();
}

void ours(benchmark::State &state) {
    const auto lock = condition(kMine);
    std::atomic<bool> isOver{false};
    std::thread other([&lock, &isOver] {
        for (waitCondition(*lock, kTheirs); !isOver; waitCondition(*lock, kTheirs)) {
            signalCondition(*lock, kMine);
        }
    });
    for ([[maybe_unused]] auto run : state) {
        signalCondition(*lock, kTheirs);
        waitCondition(*lock, kMine);
    }
    isOver = true;
    signalCondition(*lock, kTheirs);
    other.join();
}

} // namespace

BENCHMARK(peer)->Name("condition/peer")->UseRealTime();
BENCHMARK(ours)->Name("condition/ours")->UseRealTime();
