#pragma once

#include "platform/linux/mainthread/RunLoop.h"

namespace quillmark::test {

/// The one that the windows of this process are served beside; they live as long as it does.
inline RunLoop &windowsRunLoop() {
    static auto &runLoop = *new RunLoop;
    return runLoop;
}

} // namespace quillmark::test
