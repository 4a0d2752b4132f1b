#include "Command.h"

#include "accounts/KeyList.h"
#include "installcheck/InstallCheckManager.h"
#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "tools/UpdateToolManager.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace quillmark::ctl {

namespace {

Dictionary itemAt(const InstallCheckManager &manager, size_t index) {
    const RequiredItem &item = manager.requiredItemsList()[index].dictionary();
    return {{"index", index},
            {"type", textOf(item, kInstallType).value_or("")},
            {"name", textOf(item, kName).value_or("")},
            {"installPath", valueOf(item, kInstallPath).text()},
            {"status", keyOf(manager.requiredItemsStatuses()[index])}};
}

/// Tells what the last evaluation found.
Answer tellStatus(const InstallCheckManager &manager, const Output &output) {
    List items;
    for (size_t index = 0; index < manager.requiredItemsList().size(); ++index) {
        items.emplace_back(itemAt(manager, index));
    }
    output.json(Dictionary{{"items", items},
                           {"numberRepairsRequired", manager.numberRepairsRequired()},
                           {"numberItemsMissing", manager.numberItemsMissing()},
                           {"helperRepairRequired", manager.isHelperRepairRequired()},
                           {"macFuseRepairRequired", manager.isMacFuseRepairRequired()},
                           {"restartIndex", manager.restartIndex()}});
    return manager.numberRepairsRequired() == 0 && manager.numberItemsMissing() == 0 ? Answer::Yes : Answer::No;
}

/// After an evaluation. The launcher takes a catalogue that can't be read for an empty one, and starts the core; who
/// asks here wants to know.
InstallCheckManager &evaluated() {
    InstallCheckManager &manager = InstallCheckManager::sharedManager();
    if (!manager.isCatalogueReadable()) {
        throw Failure{platform().mainBundle.resourcePath() + "/RequiredItems.plist", "can't be read"};
    }
    manager.updateStatus();
    return manager;
}

Action defineStatus(CLI::App & /*app*/) {
    return [](const Output &output) {
        const InstallCheckManager &manager = evaluated();
        return tellStatus(manager, output);
    };
}

/// Tells each step, in a line of its own, on standard error.
void tellStep(const std::string &name, const std::string &step) {
    std::fprintf(stderr, "%s: %s\n", name.c_str(), step.c_str());
}

Action defineRepair(CLI::App & /*app*/) {
    return [](const Output &output) {
        InstallCheckManager &manager = evaluated();
        Failure failure{"repair", {}};
        const auto tell = [&failure](const std::string &name, const std::string &step) {
            failure = {name, step};
            tellStep(failure.what, failure.why);
        };
        if (!manager.runRepairPass(tell)) {
            const auto reason = UpdateToolManager::sharedManager().failureReason();
            failure.why += " failed: " + reason.value_or("there is no repair for it"); // nothing was run
            throw Failure(failure);
        }
        manager.updateStatus();
        return tellStatus(manager, output);
    };
}

constexpr Command kCommands[] = {
    {nullptr, "status", "tell which of the installed components are in order", "quillmarkctl status --pretty",
     defineStatus},
    {nullptr, "repair", "repair the installed components, without a window", "quillmarkctl repair --log-level normal",
     defineRepair},
};

} // namespace

std::span<const Command> installCommands() { return kCommands; }

} // namespace quillmark::ctl
