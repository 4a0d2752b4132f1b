#pragma once

#include "platform/linux/windows/DisplayTrial.h"
#include "platform/windows/Windows.h"

#include <optional>
#include <string>

namespace quillmark {

class Bundle;
class RunLoop;

/// Loads the window module of a bundle when the first window is wanted: the usual start needs none, and window
/// libraries take longer to load than all the rest takes to run.
///
/// Concurrency: the main thread only.
class WindowModule {
public:
    WindowModule(const Bundle &bundle, RunLoop &runLoop) : m_bundle(bundle), m_runLoop(runLoop) {}

    /// Loads the module, and begins to find out whether a display can be reached, which goes on beside what the process
    /// does next. No other thread may run at this moment.
    void prepare();

    /// The module's windows, or null when it can't be loaded or no display can be reached; a later call tries again.
    /// \param obstacle receives the reason, as a part of a sentence.
    Windows *open(std::string &obstacle);

    /// Draws a header view off screen, with or without a display; afterwards open() gives windows that nobody sees,
    /// unless it was called before.
    /// \param obstacle receives why there is no picture. \returns a PNG.
    std::optional<std::string> drawHeader(const HeaderPicture &picture, std::string &obstacle);

private:
    /// An exported function of the module; null when an application with windows can't be made.
    void *symbol(const char *name, std::string &obstacle);

    const Bundle &m_bundle;
    RunLoop &m_runLoop;
    DisplayTrial m_trial;
    Windows *m_windows = nullptr;
};

} // namespace quillmark
