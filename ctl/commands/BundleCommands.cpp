#include "Command.h"

#include "launcher/StaleBundles.h"
#include "platform/Platform.h"
#include "platform/files/BundleSearch.h"
#include "texts/LocalizedStrings.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace quillmark::ctl {

namespace {

Action defineFind(CLI::App &app) {
    struct Arguments {
        std::string identifier;
        std::string folder;
    };
    const auto arguments = std::make_shared<Arguments>();
    app.add_option("--identifier", arguments->identifier, "the bundle identifier to look for")
        ->required()
        ->type_name("ID");
    app.add_option("FOLDER", arguments->folder, "where to look, folders below it included")->required();
    return [arguments](const Output &output) {
        std::optional<std::vector<std::string>> paths;
        pathsForIdent(arguments->identifier, arguments->folder, &paths, platform().propertyList);
        output.json(listOf(paths.value_or(std::vector<std::string>())));
        return paths ? Answer::Yes : Answer::No;
    };
}

Action defineStale(CLI::App & /*app*/) {
    return [](const Output &output) {
        output.json(listOf(
            staleClientBundles(QMLocalizedString("ProductName"), platform().workspace, platform().propertyList)));
        return Answer::Yes;
    };
}

constexpr Command kCommands[] = {
    {"bundles", "find", "list the application bundles with an identifier",
     "quillmarkctl bundles find --identifier com.quillmark.quillmarkclient /Applications", defineFind},
    {"bundles", "stale", "list the older copies of the client that a move would remove",
     "quillmarkctl bundles stale --pretty", defineStale},
};

} // namespace

std::span<const Command> bundleCommands() { return kCommands; }

} // namespace quillmark::ctl
