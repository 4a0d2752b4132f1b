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

qint32 LinuxAppleEvents::sendMessage(const Event &event) {
    const QString &identifier = dynamic_cast<const QuitEvent &>(event).bundleIdentifier(); // the only kind there is
    if (m_sessionBus.activateQuit(identifier)) {
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
