#include "Command.h"

#include "desktop/FinderSupport.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>

namespace quillmark::ctl {

namespace {

Action defineSelection(CLI::App &app) {
    const auto isRetry = std::make_shared<bool>(false);
    app.add_flag("--retry", *isRetry, "bring the core application and then the Finder to the front before");
    return [isRetry](const Output &output) {
        output.json(listOf(FinderSupport::getSelectedFinderItemsNoCacheIsRetry(*isRetry)));
        return Answer::Yes;
    };
}

Action defineRefresh(CLI::App &app) {
    const auto path = std::make_shared<std::string>();
    app.add_option("PATH", *path, "a file or folder")->required();
    return [path](const Output & /*output*/) {
        // The Finder stands in a folder of its own.
        FinderSupport::updateFileAtPath(std::filesystem::absolute(*path).string());
        return Answer::Yes;
    };
}

Action defineServers(CLI::App &app) {
    const auto wish = std::make_shared<std::string>();
    app.add_option("on|off", *wish, "have them shown, or not")->check(CLI::IsMember({"on", "off"}));
    return [wish](const Output &output) {
        if (!wish->empty()) {
            FinderSupport::setShowConnectedServersOnDesktop(*wish == "on");
        } else {
            output.line(FinderSupport::showConnectedServersOnDesktop() ? "yes" : "no");
        }
        return Answer::Yes;
    };
}

constexpr const char *kNothingDone =
    "Where there is no Finder, as on Linux, nothing is done, and the exit status is 0 all the same.";

constexpr Command kCommands[] = {
    {"finder", "selection", "list what is selected in the Finder", "quillmarkctl finder selection --pretty",
     defineSelection, "Where there is no Finder, as on Linux, nothing is ever selected."},
    {"finder", "refresh", "have the Finder redraw a file", "quillmarkctl finder refresh ~/Quillmark/Letter.odt",
     defineRefresh, kNothingDone},
    {"finder", "servers", "tell whether the Finder shows connected servers on the desktop, or set it",
     "quillmarkctl finder servers off", defineServers,
     "Where there is no Finder, as on Linux, the answer is always yes, and nothing can be set: that ends with status 0 "
     "all "
     "the same."},
};

} // namespace

std::span<const Command> finderCommands() { return kCommands; }

} // namespace quillmark::ctl
