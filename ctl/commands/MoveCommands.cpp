#include "Command.h"
#include "Input.h"

#include "desktop/MoveOffer.h"
#include "launcher/StaleBundles.h"
#include "platform/Platform.h"
#include "texts/LocalizedStrings.h"

#include <CLI/CLI.hpp>

namespace quillmark::ctl {

namespace {

Action definePlan(CLI::App & /*app*/) {
    return [](const Output &output) {
        requirePreferences();
        gAlsoRemoveBundlePaths =
            staleClientBundles(QMLocalizedString("ProductName"), platform().workspace, platform().propertyList);
        const MovePlan plan = planOfMove(LocalizedStrings::sharedManager());
        const auto toStay = reasonToStay();
        const auto reason = toStay ? toStay : plan.obstacle;
        output.json(
            Dictionary{{"offer", !reason},
                       {"reason", reason.value_or('"' + plan.source + "\" lies outside the Applications folders")},
                       {"source", plan.source},
                       {"destination", plan.destination},
                       {"needsAuthorisation", plan.needsAuthorisation},
                       {"onDiskImage", plan.isOnDiskImage},
                       {"informativeText", plan.informativeText},
                       {"relaunchCommand", plan.relaunchCommand},
                       {"detachCommand", plan.detachCommand}});
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
