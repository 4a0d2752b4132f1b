#pragma once

#include <functional>
#include <sys/types.h>

namespace quillmark {

/// Finds out whether an application with windows can be made. The window library aborts the process when it reaches no
/// display, finds no plug-in for it or can't load one, and there is no way to ask beforehand; so a copy of the process
/// tries it first.
///
/// Concurrency: the main thread only.
class DisplayTrial {
public:
    /// Starts the copy and returns at once. Nothing else may run in the process at this moment: what other threads hold
    /// stays held in the copy.
    /// \param attempt runs in the copy, and returns whether it succeeded if it returns at all.
    void begin(const std::function<bool()> &attempt);

    /// Waits for the copy's end. \returns false, too, when none was begun since the last answer.
    bool succeeds();

    bool isUnderWay() const { return m_child > 0; }

private:
    pid_t m_child = 0;
};

} // namespace quillmark
