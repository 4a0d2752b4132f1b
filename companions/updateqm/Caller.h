#pragma once

#include <sys/types.h>

namespace updateqm {

/// Who started this tool. Whoever it was, the process is the administrator's from start() on: the caller can neither
/// signal it nor look into it, and what it makes belongs to the administrator.
class Caller {
public:
    /// Raises a Failure when the tool has not got the administrator's rights.
    static void start();
    static uid_t user();

    /// While it lives, files are opened with the caller's rights, not the administrator's.
    class Rights {
    public:
        Rights();
        Rights(const Rights &) = delete;
        Rights &operator=(const Rights &) = delete;
        ~Rights();
    };
};

} // namespace updateqm
