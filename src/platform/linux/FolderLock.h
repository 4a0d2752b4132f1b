#pragma once

#include "platform/Clock.h"
#include "platform/Descriptor.h"

#include <QFile>
#include <fcntl.h>
#include <sys/file.h>

namespace quillmark {

/// The folder, open and locked against other processes that do the same, until it is closed. A holder keeps the lock
/// for milliseconds, so one that does not let go counts as a failure, and the descriptor is not open.
inline Descriptor lockedFolder(const QString &path, Clock &clock) {
    constexpr int kAttempts = 200;
    constexpr std::chrono::milliseconds kPause(10);
    Descriptor folder(::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (int attempt = 0; folder.isOpen() && attempt < kAttempts; ++attempt) {
        if (::flock(folder.get(), LOCK_EX | LOCK_NB) == 0) {
            return folder;
        }
        clock.sleep(kPause);
    }
    return {};
}

} // namespace quillmark
