#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmark {

class LocalizedStrings;

/// \name The settings of a move
/// Process-wide and absent at first; the functions of MoveToApplications.h store them.
/// Bundles that go when the application moves; may start with a tilde.
inline std::vector<std::string> gAlsoRemoveBundlePaths;
inline std::optional<std::string> gAltDstBundleName; ///< deliberately read by nobody: a moved bundle keeps its name
inline std::optional<std::string> gAltDstBundleParentPath; ///< where to move to, in place of the Applications folder
inline std::optional<std::string> gAltSrcBundlePath; ///< what to move, in place of the running application's bundle

/// The key of the setting that the user wants no further question.
inline constexpr std::string_view kMoveAlertSuppress = "moveToApplicationsFolderAlertSuppress";

/// What a move needs of the system's window library. Each version has all that its predecessors have.
struct WindowLibraryAbilities {
    double above;        ///< the whole version numbers above this one have them
    bool hasSuppression; ///< an alert can show the check box against further alerts
    bool findsDownloads; ///< the Downloads folders can be asked for
    bool copiesBundles;  ///< the file manager copies, and tells what went wrong
    /// Takes the mark of a downloaded file from the bundle that is put in; empty: this system has none.
    const char *quarantineFormat;
};

/// The abilities of a version, as the system gives it.
const WindowLibraryAbilities &abilitiesOfWindowLibrary(double version);

/// What a move of the application would do, found without changing anything.
struct MovePlan {
    std::string source;         ///< the bundle to move
    std::string destination;    ///< where it is to be
    bool isOnDiskImage = false; ///< the source can't be removed, and its volume is let go
    bool needsAuthorisation = false;
    std::string informativeText; ///< of the question to the user
    std::string relaunchCommand; ///< shell text that starts the moved bundle as soon as this process has ended
    /// Shell text that lets go of the source's volume; absent unless on a disk image.
    std::optional<std::string> detachCommand;
    std::optional<std::string> obstacle; ///< why it can't be offered, as a sentence; absent when it can
};

/// The plan for the source and the destination of the settings.
MovePlan planOfMove(LocalizedStrings &strings);

/// Why nobody even thinks of a move, as a sentence: what the user said earlier, or the application's place. Absent when
/// nothing speaks against it.
std::optional<std::string> reasonToStay();

} // namespace quillmark
