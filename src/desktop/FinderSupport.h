#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace quillmark {

class Clock;

/// Talks to the Finder, to iTunes and to the system process. What fails is not told, but for the status of an event: a
/// Finder that gives no answer has nothing selected and shows its servers.
///
/// Concurrency: scripts run on the caller's thread and block it until the Finder answers.
class FinderSupport {
public:
    /// The one of this process, with the installed platform's clock.
    static FinderSupport &sharedManager();
    explicit FinderSupport(const Clock &clock) : m_clock(clock) {}

    /// \name The selection
    /// The POSIX paths of the items that are selected in the Finder, in its order. What the Finder names and is no text
    /// is left out.

    /// A list that is kept for 2.5 seconds, counted from the call that filled it; a retry always fills it again. Every
    /// caller gets the same list, and filling it again changes it for all of them. Nobody who finds it fresh waits
    /// for a thread that fills it.
    const std::vector<std::string> &getSelectedFinderItemsIsRetry(bool isRetry);
    /// New lists, which leave the kept one alone.
    static std::vector<std::string> getSelectedFinderItemsNoCacheIsRetry(bool isRetry);
    static std::vector<std::string> createSelectedFinderItemsArrayNoCacheIsRetry(bool isRetry);
    static void appendSelectedFinderItemsToArray(std::vector<std::string> &array, bool isRetry);

    /// \name Other requests

    /// Has the Finder redraw a file. The path stands in a script between double quotes, unescaped.
    static void updateFileAtPath(const std::string &path);

    /// Whether the Finder shows connected servers on the desktop.
    static bool showConnectedServersOnDesktop();
    static void setShowConnectedServersOnDesktop(bool isShown);

    /// Sends iTunes the signal to terminate, if it runs.
    static void quitiTunes();

    /// Sends the system process a bare event of the class "aevt", without waiting for an answer.
    /// \param eventIdentifier a four-character code. \returns a status of the Apple Event Manager, 0 for success.
    static std::int32_t sendAppleEventToSystemProcess(std::uint32_t eventIdentifier);

private:
    const Clock &m_clock;
    std::mutex m_mutex; ///< held while the list is filled
    std::vector<std::string> _fileList;
    std::atomic<double> _lastRequestTimeInterval = 0; ///< seconds since the reference date
};

} // namespace quillmark
