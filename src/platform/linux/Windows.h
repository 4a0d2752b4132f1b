#pragma once

#include "platform/CheckWindowView.h"

class QString;

namespace quillmark {

class Alerts;

/// Everything that needs a window library. It comes from a module of its own, which shares nothing with this program
/// but Qt Core and these headers.
class Windows {
public:
    virtual ~Windows() = default;
    virtual Alerts &alerts() = 0;
    /// The check window of that file, which lives as long as the process.
    /// \param obstacle receives why there is none. \returns null then.
    virtual CheckWindowView *loadCheckWindow(const QString &interfaceFile, const HeaderBranding &branding,
                                             CheckWindowView::Owner &owner, QString &obstacle) = 0;
};

/// The module's one exported function. It connects to the display at its first success. Main thread only.
/// \param resourceFolder where the application's pictures are. \param obstacle receives why there can be no windows.
/// \returns the windows, which live as long as the process, or null.
using QuillmarkOpenWindows = Windows *(const QString &resourceFolder, QString &obstacle);
inline constexpr const char *kOpenWindowsSymbol = "quillmarkOpenWindows";

} // namespace quillmark
