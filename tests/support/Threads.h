#pragma once

#include <functional>
#include <thread>
#include <vector>

namespace quillmark::test {

/// Does something on that many threads at once, each with its index, and waits for them.
inline void onThreads(int count, const std::function<void(int)> &action) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back(action, i);
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

/// What several threads are given that ask at once.
template <class Question>
auto answersToThreads(Question question) {
    std::vector<decltype(question())> answers(8);
    onThreads(8, [&](int thread) { answers[static_cast<size_t>(thread)] = question(); });
    return answers;
}

} // namespace quillmark::test
