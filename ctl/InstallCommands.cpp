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

QJsonObject itemAt(const InstallCheckManager &manager, qsizetype index) {
    const RequiredItem item = manager.requiredItemsList()[index].toMap();
    const QString installPath = textOf(item, kInstallPath);
    return {{QStringLiteral("index"), index},
            {QStringLiteral("type"), textOf(item, kInstallType)},
            {QStringLiteral("name"), textOf(item, kName)},
            {QStringLiteral("installPath"), installPath.isNull() ? QJsonValue() : QJsonValue(installPath)},
            {QStringLiteral("status"), manager.requiredItemsStatusKeys()[index]}};
}

/// Tells what the last evaluation found.
Answer tellStatus(const InstallCheckManager &manager, const Output &output) {
    QJsonArray items;
    for (qsizetype index = 0; index < manager.requiredItemsList().size(); ++index) {
        items.append(itemAt(manager, index));
    }
    output.json(QJsonObject{{QStringLiteral("items"), items},
                            {QStringLiteral("numberRepairsRequired"), manager.numberRepairsRequired()},
                            {QStringLiteral("numberItemsMissing"), manager.numberItemsMissing()},
                            {QStringLiteral("helperRepairRequired"), manager.isHelperRepairRequired()},
                            {QStringLiteral("macFuseRepairRequired"), manager.isMacFuseRepairRequired()},
                            {QStringLiteral("restartIndex"), manager.restartIndex()}});
    return manager.numberRepairsRequired() == 0 && manager.numberItemsMissing() == 0 ? Answer::Yes : Answer::No;
}

/// After an evaluation. The launcher takes a catalogue that can't be read for an empty one, and starts the core; who
/// asks here wants to know.
InstallCheckManager &evaluated() {
    InstallCheckManager &manager = InstallCheckManager::sharedManager();
    if (!manager.isCatalogueReadable()) {
        throw Failure{platform().mainBundle.resourcePath() + QStringLiteral("/RequiredItems.plist"),
                      QStringLiteral("can't be read")};
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
void tellStep(const QString &name, const QString &step) {
    std::fprintf(stderr, "%s: %s\n", name.toUtf8().constData(), step.toUtf8().constData());
}

Action defineRepair(CLI::App & /*app*/) {
    return [](const Output &output) {
        InstallCheckManager &manager = evaluated();
        Failure failure{QStringLiteral("repair"), {}};
        const auto tell = [&failure](const QString &name, const QString &step) {
            failure = {name, step};
            tellStep(name, step);
        };
        if (!manager.runRepairPass(tell)) {
            const QString reason = UpdateToolManager::sharedManager().failureReason();
            failure.why += QStringLiteral(" failed: ") +
                           (reason.isNull() ? QStringLiteral("there is no repair for it") : reason); // nothing was run
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
