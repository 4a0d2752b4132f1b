#pragma once

#include "platform/linux/desktop/SessionBus.h"
#include "platform/linux/plugins/PlugIn.h"
#include "platform/process/Problem.h"

#include <mutex>

namespace quillmark {

/// The session's bus by way of a bundle's session module, which is loaded at the first call in a session that has a
/// bus. Without the module, or without a bus, nobody owns a name and nobody can be asked.
class SessionModule final : public SessionBus {
public:
    explicit SessionModule(const Bundle &bundle) : m_bundle(bundle) {}

    std::optional<int> processOwning(const std::string &busName) override {
        SessionBus *const bus = open();
        return bus != nullptr ? bus->processOwning(busName) : std::nullopt;
    }
    bool activateQuit(const std::string &bundleIdentifier) override {
        SessionBus *const bus = open();
        return bus != nullptr && bus->activateQuit(bundleIdentifier);
    }
    bool activateQuitOfOwner(const std::string &busName) override {
        SessionBus *const bus = open();
        return bus != nullptr && bus->activateQuitOfOwner(busName);
    }

private:
    SessionBus *open() {
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

    const Bundle &m_bundle;
    std::once_flag m_isTried;
    SessionBus *m_bus = nullptr;
};

} // namespace quillmark
