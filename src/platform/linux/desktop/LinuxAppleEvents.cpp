#include "platform/linux/desktop/LinuxAppleEvents.h"

#include "platform/Workspace.h"
#include "platform/linux/desktop/SessionBus.h"

#include <csignal>

namespace quillmark {

namespace {

// Numbers of the Apple Event Manager.
constexpr std::int32_t kInvalidParameter = -50;     // paramErr
constexpr std::int32_t kApplicationNotFound = -600; // procNotFound

class QuitEvent final : public AppleEvents::Event {
public:
    explicit QuitEvent(std::string identifier) : bundleIdentifier(std::move(identifier)) {}
    std::string bundleIdentifier;
};

} // namespace

std::int32_t LinuxAppleEvents::buildQuitEvent(const std::string &bundleIdentifier, std::unique_ptr<Event> &event) {
    if (bundleIdentifier.empty()) {
        return kInvalidParameter;
    }
    event = std::make_unique<QuitEvent>(bundleIdentifier);
    return 0;
}

std::int32_t LinuxAppleEvents::createProcessAddress(ProcessSerialNumber /*process*/,
                                                    std::unique_ptr<Address> &address) {
    address = std::make_unique<Address>();
    return 0;
}

std::int32_t LinuxAppleEvents::createEvent(std::uint32_t /*eventClass*/, std::uint32_t /*eventIdentifier*/,
                                           const Address & /*address*/, std::unique_ptr<Event> &event) {
    event = std::make_unique<Event>();
    return 0;
}

std::int32_t LinuxAppleEvents::sendMessage(const Event &event) {
    const auto *const quitEvent = dynamic_cast<const QuitEvent *>(&event);
    if (quitEvent == nullptr) {
        return kApplicationNotFound;
    }
    const std::string &identifier = quitEvent->bundleIdentifier;
    // The file manager may be in the middle of a copy: where it can be asked, it sees to that.
    const bool isAsked = identifier == kFinderIdentifier ? m_sessionBus.activateQuitOfOwner(kFileManagerName)
                                                         : m_sessionBus.activateQuit(identifier);
    if (isAsked) {
        return 0;
    }
    bool isSent = false;
    for (const Dictionary &record : m_workspace.launchedApplications()) {
        if (valueOf(record, kApplicationBundleIdentifier) == identifier) {
            const auto *process = valueOf(record, kApplicationProcessIdentifier).as<std::int64_t>();
            isSent = (process != nullptr && ::kill(static_cast<pid_t>(*process), SIGTERM) == 0) || isSent;
        }
    }
    return isSent ? 0 : kApplicationNotFound;
}

} // namespace quillmark
