#pragma once

#include "platform/Images.h"

#include <optional>
#include <string>
#include <vector>

namespace quillmark {

struct AlertDescription;
struct HeaderBranding;
struct HeaderPicture;

/// The window that tells which components are at fault and offers to repair them, with the sheet that is up meanwhile.
/// It decides nothing. What its interface file lacks is absent, and telling it something does nothing.
///
/// Concurrency: the main thread only.
class CheckWindowView {
public:
    /// What the user has done.
    class Owner {
    public:
        virtual ~Owner() = default;
        virtual void installButtonClick() = 0;
        virtual void dontInstallButtonClick() = 0;
        virtual void detailsButtonClick() = 0;
        virtual void windowWillClose() = 0;
        virtual void sheetDidEnd() = 0;
    };

    /// Whatever carries a text: the window its title, the header its own.
    enum class Outlet {
        Header,
        Explanation,
        InstallButton,
        DontInstallButton,
        DetailsButton,
        FaultsList, ///< for assistive programs only
        NameColumn,
        StatusColumn,
        Window,
        Progress,
    };

    /// A component that is not in order, in the user's words.
    struct Fault {
        std::string name;
        std::string status;
    };

    virtual ~CheckWindowView() = default;

    virtual void setText(Outlet outlet, const std::string &text) = 0;
    /// The header shows the brand of the configuration, not that of the account.
    virtual void useWelcomeBranding() = 0;
    virtual void setHeaderLogo(const Image &image) = 0;
    /// Return presses it.
    virtual void makeInstallButtonDefault() = 0;
    virtual void setFaults(const std::vector<Fault> &faults) = 0;

    /// Centres the window, activates the application, and puts the window in front of all others, to stay there.
    virtual void bringToFront() = 0;

    /// Covers the window with the progress sheet and starts its animation. Until the sheet ends, nothing in the window
    /// can be pressed, and other windows can stand in front of it.
    virtual void beginProgressSheet() = 0;
    /// Stops the animation and ends the sheet; the owner is told, and orders it out. The window is in front again.
    virtual void endProgressSheet() = 0;
    virtual void orderOutProgressSheet() = 0;

    /// Covers the window with an alert and does not wait for its answer.
    virtual void beginAlertSheet(const AlertDescription &alert) = 0;
};

/// Where check windows come from, and pictures of their header.
class CheckWindows {
public:
    virtual ~CheckWindows() = default;

    /// Says that a window will be wanted soon, so that what takes long can begin. No other thread may run at this
    /// moment.
    virtual void prepare() = 0;

    /// Loads the window from its interface file. It lives as long as the process.
    /// \returns null where no window can be shown, which is reported.
    virtual CheckWindowView *load(const std::string &interfaceFile, const HeaderBranding &branding,
                                  CheckWindowView::Owner &owner) = 0;

    /// Draws a header view off screen. A process that has shown no window yet will show none afterwards.
    /// \param obstacle receives, where nothing can be drawn, why: a part of a sentence. \returns the picture, a PNG.
    virtual std::optional<std::string> drawHeader(const HeaderPicture &picture, std::string &obstacle) = 0;
};

} // namespace quillmark
