#pragma once

#include <sys/prctl.h>

namespace quillmark {

/// While it lives, no other process of the same user can look into this one, take its descriptors, or find its memory
/// in a core dump. Programs that are started meanwhile are not concerned.
class PrivateMemory {
public:
    PrivateMemory() : m_previous(::prctl(PR_GET_DUMPABLE)) { ::prctl(PR_SET_DUMPABLE, 0); }
    PrivateMemory(const PrivateMemory &) = delete;
    PrivateMemory &operator=(const PrivateMemory &) = delete;
    ~PrivateMemory() {
        if (m_previous == 1) { // the only other value that a program can set
            ::prctl(PR_SET_DUMPABLE, 1);
        }
    }

private:
    int m_previous;
};

} // namespace quillmark
