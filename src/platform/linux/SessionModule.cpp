#include "platform/linux/SessionModule.h"

#include "platform/Problem.h"
#include "platform/linux/PlugIn.h"

namespace quillmark {

std::optional<int> SessionModule::processOwning(const std::string &busName) {
    SessionBus *const bus = open();
    return bus != nullptr ? bus->processOwning(busName) : std::nullopt;
}

bool SessionModule::activateQuit(const std::string &bundleIdentifier) {
    SessionBus *const bus = open();
    return bus != nullptr && bus->activateQuit(bundleIdentifier);
}

bool SessionModule::activateQuitOfOwner(const std::string &busName) {
    SessionBus *const bus = open();
    return bus != nullptr && bus->activateQuitOfOwner(busName);
}

SessionBus *SessionModule::open() {
    std::call_once(m_isTried, [this] {
        const std::optional<std::string> address = sessionBusAddress();
        if (!address) {
            return;
        }
        std::string obstacle;
        void *const symbol = plugInSymbol(m_bundle, "libquillmark-session.so", kOpenSessionBusSymbol, obstacle);
        if (auto *const openSessionBus = reinterpret_cast<QuillmarkOpenSessionBus *>(symbol)) {
            m_bus = openSessionBus(*address);
        } else {
            reportProblem("The session's bus can't be asked: " + obstacle);
        }
    });
    return m_bus;
}

} // namespace quillmark
