#pragma once

#include "platform/AppleEvents.h"

namespace quillmark {

class Workspace;

/// Requests become signals to the application's processes: to quit is SIGTERM.
class LinuxAppleEvents final : public AppleEvents {
public:
    explicit LinuxAppleEvents(Workspace &workspace) : m_workspace(workspace) {}

    qint32 buildQuitEvent(const QString &bundleIdentifier, std::unique_ptr<Event> &event) override;
    qint32 sendMessage(const Event &event) override;

private:
    Workspace &m_workspace;
};

} // namespace quillmark
