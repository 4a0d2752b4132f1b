#pragma once

#include "platform/CheckWindowView.h"

#include <string>
#include <vector>

namespace quillmark {

class Alerts;
struct HeaderPicture;

/// What the main thread waits for besides the events of windows.
class OtherEvents {
public:
    virtual ~OtherEvents() = default;
    /// Can be read when there is one.
    virtual int descriptor() const = 0;
    /// Serves those that are there.
    virtual void serveReady() = 0;
};

/// Everything that needs a window library. It comes from a module of its own, which shares nothing with this program
/// but these headers and the standard library.
class Windows {
public:
    virtual ~Windows() = default;
    virtual Alerts &alerts() = 0;

    /// Waits for events of the windows, or others, and serves them: once, or for ever.
    virtual void turn() = 0;
    virtual void run() = 0;

    /// The check window of that file, which lives as long as the process.
    /// \param problems receives what is wrong with the file and its pictures, each as a part of a sentence. \returns
    /// null when that is too much for a window.
    virtual CheckWindowView *loadCheckWindow(const std::string &interfaceFile, const HeaderBranding &branding,
                                             CheckWindowView::Owner &owner, std::vector<std::string> &problems) = 0;
};

/// The module's exported functions. This one makes an application with windows, and aborts the process where that is
/// impossible: only a copy of the process may call it.
/// \returns true.
using QuillmarkTryDisplay = bool();
inline constexpr const char *kTryDisplaySymbol = "quillmarkTryDisplay";

/// It makes an application, once, and aborts the process where that is impossible. Main thread only.
/// \param resourceFolder where the application's pictures are. \param otherEvents are served, too, wherever the window
/// library waits; they live as long as the process. \param obstacle receives why there can be no windows.
/// \returns the windows, which live as long as the process, or null.
using QuillmarkOpenWindows = Windows *(const std::string &resourceFolder, OtherEvents &otherEvents,
                                       std::string &obstacle);
inline constexpr const char *kOpenWindowsSymbol = "quillmarkOpenWindows";

/// Draws a header view off screen. It needs no display, and a process that has no windows yet will have none
/// that anybody sees. Main thread only.
/// \param png receives the picture. \param obstacle receives why there is none. \returns false then.
using QuillmarkDrawHeader = bool(const HeaderPicture &picture, std::string &png, std::string &obstacle);
inline constexpr const char *kDrawHeaderSymbol = "quillmarkDrawHeader";

} // namespace quillmark
