#pragma once

#include "platform/linux/SessionBus.h"

#include <QMap>
#include <QStringList>

namespace quillmark::test {

/// A bus with the given names on it.
class FakeSessionBus final : public SessionBus {
public:
    QMap<QString, int> processes; // by the name that each owns
    QStringList quittable;        // names of applications that have a "quit" action
    QStringList activated;        // those whose action was activated

    std::optional<int> processOwning(const QString &busName) override {
        return processes.contains(busName) ? std::optional(processes.value(busName)) : std::nullopt;
    }
    bool activateQuitOfOwner(const QString &busName) override { return activateQuit(busName); }
    bool activateQuit(const QString &bundleIdentifier) override {
        activated += quittable.contains(bundleIdentifier) ? QStringList{bundleIdentifier} : QStringList();
        return quittable.contains(bundleIdentifier);
    }
};

} // namespace quillmark::test
