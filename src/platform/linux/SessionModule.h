#pragma once

#include "platform/linux/SessionBus.h"

#include <mutex>

namespace quillmark {

class Bundle;

/// The session's bus by way of a bundle's session module, which is loaded at the first call in a session that has a
/// bus. Without the module, or without a bus, nobody owns a name and nobody can be asked.
class SessionModule final : public SessionBus {
public:
    explicit SessionModule(const Bundle &bundle) : m_bundle(bundle) {}

    std::optional<int> processOwning(const std::string &busName) override;
    bool activateQuit(const std::string &bundleIdentifier) override;
    bool activateQuitOfOwner(const std::string &busName) override;

private:
    SessionBus *open();

    const Bundle &m_bundle;
    std::once_flag m_isTried;
    SessionBus *m_bus = nullptr;
};

} // namespace quillmark
