#include "platform/linux/SessionModule.h"

#include "platform/Problem.h"
#include "platform/linux/PlugIn.h"

#include <QFile>
#include <QString>

namespace quillmark {

namespace {

/// Where the session's bus listens; empty when the session has none. The bus libraries would start one of their own
/// then.
QByteArray sessionBusAddress() {
    if (QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS"); !address.isEmpty()) {
        return address;
    }
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    const QByteArray socket = folder + "/bus";
    return !folder.isEmpty() && QFile::exists(QFile::decodeName(socket)) ? "unix:path=" + socket : QByteArray();
}

} // namespace

std::optional<int> SessionModule::processOwning(const QString &busName) {
    SessionBus *const bus = open();
    return bus != nullptr ? bus->processOwning(busName) : std::nullopt;
}

bool SessionModule::activateQuit(const QString &bundleIdentifier) {
    SessionBus *const bus = open();
    return bus != nullptr && bus->activateQuit(bundleIdentifier);
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
