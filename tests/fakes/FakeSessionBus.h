#pragma once

#include "platform/linux/desktop/SessionBus.h"

#include <map>
#include <set>
#include <vector>

namespace quillmark::test {

/// A bus with the given names on it.
class FakeSessionBus final : public SessionBus {
public:
    std::map<std::string, int> processes; // by the name that each owns
    std::set<std::string> quittable;      // names of applications that have a "quit" action
    std::vector<std::string> activated;   // those whose action was activated

    std::optional<int> processOwning(const std::string &busName) override {
        return processes.contains(busName) ? std::optional(processes.at(busName)) : std::nullopt;
    }
    bool activateQuitOfOwner(const std::string &busName) override { return activateQuit(busName); }
    bool activateQuit(const std::string &bundleIdentifier) override {
        if (!quittable.contains(bundleIdentifier)) {
            return false;
        }
        activated.push_back(bundleIdentifier);
        return true;
    }
};

} // namespace quillmark::test
