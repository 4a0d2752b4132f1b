#pragma once

#include <optional>
#include <string>

namespace quillmark {

/// The message bus of the user's desktop session, as far as it knows of applications. Nothing is ever started by
/// asking, and every call comes back within a few seconds whatever the others on the bus do. Any thread may call.
class SessionBus {
public:
    virtual ~SessionBus() = default;

    /// The process that owns a name on the bus; nothing when none does.
    virtual std::optional<int> processOwning(const std::string &busName) = 0;

    /// Activates the "quit" action of the application whose name on the bus is its bundle identifier.
    /// \returns false when no such application, or none with such an action, is on the bus. An application that is
    /// too busy to answer has been asked.
    virtual bool activateQuit(const std::string &bundleIdentifier) = 0;

    /// The same for the application that owns a name on the bus, whatever its own name there is.
    virtual bool activateQuitOfOwner(const std::string &busName) = 0;
};

/// The name of the desktop's file manager on that bus. It stands in for the Finder.
inline constexpr const char *kFileManagerName = "org.freedesktop.FileManager1";

/// The session module's one exported function. \param address where the bus listens.
/// \returns the bus, which lives as long as the process.
using QuillmarkOpenSessionBus = SessionBus *(const std::string &address);
inline constexpr const char *kOpenSessionBusSymbol = "quillmarkOpenSessionBus";

} // namespace quillmark
