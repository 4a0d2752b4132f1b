#include "Command.h"
#include "Input.h"

#include "branding/LocalizedStrings.h"
#include "desktop/MovePlan.h"
#include "launcher/StaleBundles.h"
#include "platform/Platform.h"

#include <CLI/CLI.hpp>

namespace quillmark::ctl {

namespace {

Action definePlan(CLI::App & /*app*/) {
    return [](const Output &output) {
        requirePreferences();
        gAlsoRemoveBundlePaths = staleClientBundles(QMLocalizedString(QStringLiteral("ProductName")),
                                                    platform().workspace, platform().propertyList);
        const MovePlan plan = planOfMove(platform(), LocalizedStrings::sharedManager());
        QString reason = reasonToStay(platform());
        if (reason.isNull()) {
            reason = plan.obstacle;
        }
        const bool isOffered = reason.isNull();
        output.json(QJsonObject{
            {QStringLiteral("offer"), isOffered},
            {QStringLiteral("reason"),
             isOffered ? QStringLiteral("\"%1\" lies outside the Applications folders").arg(plan.source) : reason},
            {QStringLiteral("source"), plan.source},
            {QStringLiteral("destination"), plan.destination},
            {QStringLiteral("needsAuthorisation"), plan.needsAuthorisation},
            {QStringLiteral("onDiskImage"), plan.isOnDiskImage},
            {QStringLiteral("informativeText"), plan.informativeText},
            {QStringLiteral("relaunchCommand"), plan.relaunchCommand},
            {QStringLiteral("detachCommand"), plan.detachCommand.isNull() ? QJsonValue() : plan.detachCommand}});
        return Answer::Yes;
    };
}

constexpr Command kCommands[] = {
    {"move", "plan", "tell what a move into the Applications folder would do, and change nothing",
     "quillmarkctl move plan --pretty", definePlan},
};

} // namespace

std::span<const Command> moveCommands() { return kCommands; }

} // namespace quillmark::ctl
