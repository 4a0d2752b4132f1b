#pragma once

#include "platform/Application.h"
#include "platform/linux/mainthread/RunLoop.h"

#include <cstdlib>

namespace quillmark {

class LinuxApplication final : public Application {
public:
    explicit LinuxApplication(RunLoop &runLoop) : m_runLoop(runLoop) {}

    /// There is no such thing here: a window makes itself the active one when it is shown.
    bool isActive() const override { return false; }
    void activateIgnoringOtherApps() override {}

    /// exit() writes what stdio still holds; there is nothing else to tear down.
    [[noreturn]] void terminate() override { std::exit(EXIT_SUCCESS); }  // NOLINT(concurrency-mt-unsafe)
    [[noreturn]] void exitAtOnce() override { std::exit(EXIT_SUCCESS); } // NOLINT(concurrency-mt-unsafe)
    void run() override { m_runLoop.run(); }

private:
    RunLoop &m_runLoop;
};

} // namespace quillmark
