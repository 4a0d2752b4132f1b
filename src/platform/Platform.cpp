#include "platform/Platform.h"

#include <atomic>

namespace quillmark {

namespace {
constinit std::atomic<const Platform *> installed{nullptr};
} // namespace

const Platform &platform() {
    const Platform *current = installed.load(std::memory_order_acquire);
    return current != nullptr ? *current : nativePlatform();
}

void installPlatform(const Platform *replacement) { installed.store(replacement, std::memory_order_release); }

} // namespace quillmark
