#pragma once

#include "platform/AppleEvents.h"

namespace quillmark {

class SessionBus;
class Workspace;

/// A request to quit activates the application's "quit" action on the session's bus; an application without one gets
/// SIGTERM. There is no system process, so nothing else finds its receiver.
class LinuxAppleEvents final : public AppleEvents {
public:
    LinuxAppleEvents(Workspace &workspace, SessionBus &sessionBus) : m_workspace(workspace), m_sessionBus(sessionBus) {}

    std::int32_t buildQuitEvent(const std::string &bundleIdentifier, std::unique_ptr<Event> &event) override;
    std::int32_t createProcessAddress(ProcessSerialNumber process, std::unique_ptr<Address> &address) override;
    std::int32_t createEvent(std::uint32_t eventClass, std::uint32_t eventIdentifier, const Address &address,
                             std::unique_ptr<Event> &event) override;
    std::int32_t sendMessage(const Event &event) override;

private:
    Workspace &m_workspace;
    SessionBus &m_sessionBus;
};

} // namespace quillmark
