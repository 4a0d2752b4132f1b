#include "platform/linux/LinuxAppleEvents.h"

#include "platform/Workspace.h"
#include "platform/linux/SessionBus.h"

#include <csignal>

namespace quillmark {

namespace {

// Numbers of the Apple Event Manager.
constexpr qint32 kInvalidParameter = -50;     // paramErr
constexpr qint32 kApplicationNotFound = -600; // procNotFound

class QuitEvent final : public AppleEvents::Event {
public:
    explicit QuitEvent(QString bundleIdentifier) : m_bundleIdentifier(std::move(bundleIdentifier)) {}
    const QString &bundleIdentifier() const { return m_bundleIdentifier; }

private:
    QString m_bundleIdentifier;
};

} // namespace

qint32 LinuxAppleEvents::buildQuitEvent(const QString &bundleIdentifier, std::unique_ptr<Event> &event) {
    if (bundleIdentifier.isEmpty()) {
        return kInvalidParameter;
    }
    event = std::make_unique<QuitEvent>(bundleIdentifier);
    return 0;
}

qint32 LinuxAppleEvents::createProcessAddress(ProcessSerialNumber /*process*/, std::unique_ptr<Address> &address) {
    address = std::make_unique<Address>();
    return 0;
}

qint32 LinuxAppleEvents::createEvent(quint32 /*eventClass*/, quint32 /*eventIdentifier*/, const Address & /*address*/,
                                     std::unique_ptr<Event> &event) {
    event = std::make_unique<Event>();
    return 0;
}

qint32 LinuxAppleEvents::sendMessage(const Event &event) {
    const auto *const quitEvent = dynamic_cast<const QuitEvent *>(&event);
    if (quitEvent == nullptr) {
        return kApplicationNotFound;
    }
    const QString &identifier = quitEvent->bundleIdentifier();
    // The file manager may be in the middle of a copy: where it can be asked, it sees to that.
    const bool isAsked = identifier == kFinderIdentifier ? m_sessionBus.activateQuitOfOwner(kFileManagerName)
                                                         : m_sessionBus.activateQuit(identifier);
    if (isAsked) {
        return 0;
    }
    bool isSent = false;
    for (const QVariantMap &record : m_workspace.launchedApplications()) {
        if (record.value(kApplicationBundleIdentifier).toString() == identifier) {
            isSent = ::kill(record.value(kApplicationProcessIdentifier).toInt(), SIGTERM) == 0 || isSent;
        }
    }
    return isSent ? 0 : kApplicationNotFound;
}

} // namespace quillmark
