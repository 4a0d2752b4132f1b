#pragma once

namespace quillmark {

/// This process as an application of the desktop.
class Application {
public:
    virtual ~Application() = default;

    /// Ends the process in order: buffered output is written, then it exits with status 0.
    [[noreturn]] virtual void terminate() = 0;
};

} // namespace quillmark
