#include "Command.h"
#include "Input.h"

#include "branding/BrandingManager.h"
#include "platform/Bundle.h"
#include "platform/CheckWindowView.h"
#include "platform/Platform.h"
#include "platform/PropertyList.h"
#include "platform/files/WriteAll.h"
#include "platform/windows/HeaderPicture.h"
#include "utils/IntegerValue.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <system_error>
#include <unistd.h>

namespace quillmark::ctl {

namespace {

constexpr int kWidest = 4096;
constexpr double kDensest = 4;

struct RenderArguments {
    std::string output;
    std::optional<std::int32_t> brand;
    bool isWelcome = false;
    bool isGeneric = false;
    bool isHidden = false;
    std::optional<std::string> title;
    std::optional<std::string> logo;
    int width = HeaderPicture().width;
    double scale = HeaderPicture().scale;
};

Image pictureIn(const std::string &name) {
    const auto image = name == kStandardStream ? platform().images.decode(standardInput(), name)
                                               : platform().images.load(std::filesystem::absolute(name));
    if (!image) {
        throw Failure{name, "is not a readable BMP or PNG picture of at most 4096 by 4096 pixels"};
    }
    return *image;
}

std::int32_t configurationBrand() {
    const auto path = platform().mainBundle.pathForResource("Config", "plist");
    const Dictionary configuration = platform().propertyList.readDictionary(path.value_or(""));
    return static_cast<std::int32_t>(integerValueOf(valueOf(configuration, "Brand")));
}

HeaderPicture pictureOf(const RenderArguments &arguments) {
    const BrandingManager &branding = BrandingManager::sharedManager();
    HeaderPicture picture;
    picture.branding.resourceFolder = platform().mainBundle.resourcePath();
    picture.branding.title = arguments.title ? *arguments.title : QMLocalizedString("ProductName");
    picture.branding.accountBrand = [&] { return arguments.brand.value_or(branding.getBrandingID()); };
    picture.branding.configurationBrand = [&] { return arguments.brand ? *arguments.brand : configurationBrand(); };
    picture.branding.brandedLogo = [&](std::int32_t brand) { return branding.getBrandedLogoImageForBrandID(brand); };
    if (arguments.logo) {
        picture.logo = pictureIn(*arguments.logo);
    }
    picture.useGenericBranding = arguments.isGeneric;
    picture.useWelcomeBranding = arguments.isWelcome;
    picture.isVisible = !arguments.isHidden;
    picture.width = arguments.width;
    picture.scale = arguments.scale;
    return picture;
}

void write(std::string_view bytes, const std::string &name) {
    const Descriptor file(name == kStandardStream
                              ? ::dup(STDOUT_FILENO)
                              : ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (!file.isOpen() || !writeAll(file.get(), bytes)) {
        throw Failure{name, std::generic_category().message(errno)};
    }
}

Answer render(const RenderArguments &arguments) {
    const HeaderPicture picture = pictureOf(arguments);
    std::string obstacle;
    const auto png = platform().checkWindows.drawHeader(picture, obstacle);
    if (!png) {
        throw Failure{"header render", obstacle};
    }
    write(*png, arguments.output);
    return Answer::Yes;
}

Action defineRender(CLI::App &app) {
    const auto arguments = std::make_shared<RenderArguments>();
    app.add_option("--output", arguments->output, "where the PNG is put; - is standard output")
        ->required()
        ->type_name("PNG");
    app.add_option("--brand", arguments->brand,
                   "draw for this brand, not for the account's or, with --welcome, the configuration's")
        ->type_name("N");
    app.add_flag("--welcome", arguments->isWelcome, "take the configuration's brand, as the welcome does");
    app.add_flag("--generic", arguments->isGeneric, "draw without any logo, whatever the brand");
    app.add_flag("--hidden", arguments->isHidden, "draw nothing at all");
    app.add_option("--title", arguments->title, "the title, which may be empty")->type_name("T");
    app.add_option("--logo", arguments->logo, "replace the product's own logo; - is standard input")
        ->type_name("IMAGE");
    app.add_option("--width", arguments->width, "the width in points, 600 if none is given")
        ->type_name("W")
        ->check(CLI::Range(1, kWidest));
    app.add_option("--scale", arguments->scale, "pixels in a point, 1 if none is given")->type_name("S");
    app.callback([arguments] {
        if (!(arguments->scale >= 1 && arguments->scale <= kDensest)) { // which also holds for what is not a number
            throw CLI::ValidationError("--scale", "has to be from 1 to 4");
        }
    });
    return [arguments](const Output & /*output*/) { return render(*arguments); };
}

constexpr Command kCommands[] = {
    {"header", "render", "draw the header of the launcher's windows, to see what a brand looks like",
     "quillmarkctl header render --brand 15 --output header.png", defineRender},
};

} // namespace

std::span<const Command> headerCommands() { return kCommands; }

} // namespace quillmark::ctl
