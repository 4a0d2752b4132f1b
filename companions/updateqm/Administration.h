#pragma once

#include "platform/process/Descriptor.h"

namespace updateqm {

/// While it lives, this process is the only one that changes what is the administrator's, with the administrator's
/// rights, and nothing of its caller's has a hold on it. One in a process.
class Administration {
public:
    /// Waits for another run to end. Raises a Failure, Status::Busy, when that takes too long.
    Administration();

private:
    quillmark::Descriptor m_lock; // held until the process ends
};

} // namespace updateqm
