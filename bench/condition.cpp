// A turn to another thread and back: a condition lock beside the standard library's condition variable.

#include "utils/ConditionLock+Waitable.h"

#include <benchmark/benchmark.h>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

using namespace quillmark;

namespace {

constexpr std::int64_t kMine = 0;
constexpr std::int64_t kTheirs = 1;
constexpr std::int64_t kEnd = 2;

/// The same hand-over with nothing but the standard library, written as one writes it for a single purpose.
class PlainTurn {
public:
    void give(std::int64_t turn) {
        {
            const std::scoped_lock lock(m_mutex);
            m_turn = turn;
        }
        m_changed.notify_one();
    }
    std::int64_t waitForOtherThan(std::int64_t turn) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this, turn] { return m_turn != turn; });
        return m_turn;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::int64_t m_turn = kMine;
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
