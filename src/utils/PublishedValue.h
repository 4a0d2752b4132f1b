#pragma once

#include <atomic>

namespace quillmark {

/// A process-wide value that any thread reads without a lock while one thread at a time replaces it. The values that
/// were replaced live on, since a reader may still hold one: for things that change a few times in a process's life.
template <class Value>
class PublishedValue {
public:
    constexpr PublishedValue() = default;

    /// Null before the first publish().
    const Value *get() const {
        const Node *node = m_newest.load(std::memory_order_acquire);
        return node != nullptr ? &node->value : nullptr;
    }
    void publish(Value value) {
        auto *node = new Node{std::move(value), m_newest.load(std::memory_order_relaxed)};
        while (!m_newest.compare_exchange_weak(node->previous, node, std::memory_order_release)) {
        }
    }

private:
    struct Node {
        const Value value;
        Node *previous;
    };
    std::atomic<Node *> m_newest{nullptr};
};

} // namespace quillmark
