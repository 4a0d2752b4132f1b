#include "Command.h"
#include "Input.h"

#include "branding/BrandingManager.h"
#include "texts/LocalizedStrings.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <vector>

namespace quillmark::ctl {

namespace {

struct TextArguments {
    std::string key;
    std::string section;
    bool hasSection = false;
    bool isStripped = false;
    std::vector<std::string> arguments;
};

std::string textOf(const TextArguments &arguments) {
    const std::string key = arguments.key;
    const std::string section = arguments.section;
    if (!arguments.hasSection) {
        return QMLocalizedString(key);
    }
    return arguments.isStripped ? QMLocalizedMonoStringStripProduct(section, key) : QMLocalizedMonoString(section, key);
}

Action defineText(CLI::App &app) {
    const auto arguments = std::make_shared<TextArguments>();
    app.add_option("KEY", arguments->key, "the text's key")->required();
    CLI::Option *section =
        app.add_option("--section", arguments->section, "prefer the text of this section")->type_name("S");
    app.add_flag("--strip", arguments->isStripped, "drop product names and blanks from the section's key")
        ->needs(section);
    app.add_option("--arg", arguments->arguments, "take the text as a format, and put this in")
        ->type_name("TEXT")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
    return [arguments, section](const Output &output) {
        arguments->hasSection = section->count() > 0;
        const std::string text = textOf(*arguments);
        const std::vector<FormatArgument> values(arguments->arguments.begin(), arguments->arguments.end());
        output.line(values.empty() ? text : _formatted(text, values).value_or(""));
        return Answer::Yes;
    };
}

Action defineBrand(CLI::App & /*app*/) {
    return [](const Output &output) {
        requirePreferences();
        const BrandingManager &branding = BrandingManager::sharedManager();
        const auto logo = branding.getBrandedLogoImage();
        output.json(Dictionary{{"brandID", branding.getBrandingID()},
                               {"reseller", branding.isReseller()},
                               {"logo", logo ? Value(logo->name) : Value()}});
        return Answer::Yes;
    };
}

constexpr Command kCommands[] = {
    {nullptr, "text", "print a localised text with the brand's product names",
     "quillmarkctl text QuillmarkLauncher_AlreadyRunning", defineText},
    {nullptr, "brand", "tell the brand in force and its logo", "quillmarkctl brand --pretty", defineBrand},
};

} // namespace

std::span<const Command> textCommands() { return kCommands; }

} // namespace quillmark::ctl
