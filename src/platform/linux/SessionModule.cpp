#include "platform/linux/SessionModule.h"

#include "platform/Problem.h"
#include "platform/linux/PlugIn.h"
#include "platform/linux/SessionBusAddress.h"

#include <QString>

namespace quillmark {

std::optional<int> SessionModule::processOwning(const QString &busName) {
    SessionBus *const bus = open();
    return bus != nullptr ? bus->processOwning(busName) : std::nullopt;
}

bool SessionModule::activateQuit(const QString &bundleIdentifier) {
    SessionBus *const bus = open();
    return bus != nullptr && bus->activateQuit(bundleIdentifier);
}

bool SessionModule::activateQuitOfOwner(const QString &busName) {
    SessionBus *const bus = open();
    return bus != nullptr && bus->activateQuitOfOwner(busName);
}

SessionBus *SessionModule::open() {
    std::call_once(m_isTried, [this] {
        const QByteArray address = sessionBusAddress();
        if (address.isEmpty()) {
            return;
        }
        QString obstacle;
        void *const symbol = plugInSymbol(m_bundle, "libquillmark-session.so", kOpenSessionBusSymbol, obstacle);
        if (auto *const openSessionBus = reinterpret_cast<QuillmarkOpenSessionBus *>(symbol)) {
            m_bus = openSessionBus(address);
        } else {
            reportProblem(QStringLiteral("The session's bus can't be asked: %1").arg(obstacle));
        }
    });
    return m_bus;
}

} // namespace quillmark
