#pragma once

namespace quillmark {

/// This process as an application of the desktop.
class Application {
public:
    virtual ~Application() = default;

    /// Whether the user works with this application at the moment.
    virtual bool isActive() const = 0;
    /// Makes it the active one, whatever other application is.
    virtual void activateIgnoringOtherApps() = 0;

    /// Ends the process in order: buffered output is written, then it exits with status 0.
    [[noreturn]] virtual void terminate() = 0;
    /// Ends the process at once with status 0, past everything that an orderly end would still do.
    [[noreturn]] virtual void exitAtOnce() = 0;
    /// Serves windows and the main thread's queue until the process ends.
    virtual void run() = 0;
};

} // namespace quillmark
