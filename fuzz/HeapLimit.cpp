#include "HeapLimit.h"

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <sanitizer/allocator_interface.h>

namespace quillmark::fuzz {

namespace {

std::atomic<bool> isCounting{false};
std::atomic<long> left{0};

void countAllocation(const volatile void * /*block*/, size_t size) {
    if (!isCounting) {
        return;
    }
    if ((left -= static_cast<long>(size)) < 0) {
        isCounting = false;
        std::fputs("One document took more memory than it may\n", stderr);
        std::abort();
    }
}

void countRelease(const volatile void *block) {
    if (isCounting && block != nullptr) {
        left += static_cast<long>(__sanitizer_get_allocated_size(block));
    }
}

} // namespace

HeapLimit::HeapLimit(long mebibytes) {
    static const int installed = __sanitizer_install_malloc_and_free_hooks(countAllocation, countRelease);
    if (installed == 0) {
        std::fputs("The heap cannot be watched\n", stderr);
        std::abort();
    }
    left = mebibytes << 20;
    isCounting = true;
}

HeapLimit::~HeapLimit() { isCounting = false; }

} // namespace quillmark::fuzz
