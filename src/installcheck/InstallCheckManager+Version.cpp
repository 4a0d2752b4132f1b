#include "accounts/KeyList.h"
#include "installcheck/InstallCheckManager.h"
#include "platform/Platform.h"
#include "platform/PropertyList.h"
#include "platform/SystemInfo.h"
#include "platform/Tasks.h"
#include "tools/VersionOutput.h"
#include "utils/Log.h"
#include "utils/OneLine.h"
#include "utils/ProductVersion.h"

#include <compare>

namespace quillmark {

namespace {

/// The parts of a version that decide whether a component fits this application.
struct Generation {
    std::int32_t major;
    std::int32_t minor;

    auto operator<=>(const Generation &) const = default; // NOLINT(modernize-use-nullptr): takes the 0 inside for one
};

Generation generationOf(const MicrosoftStyleVersion &version) {
    return {static_cast<std::int32_t>(version.major), static_cast<std::int32_t>(version.minor)};
}

bool needsUpdate(const std::string &path, const std::optional<std::string> &version, Generation installed) {
    const std::string applicationVersion = InstallCheckManager::getMacClientVersionAsString();
    const auto versionText = version ? std::optional(onOneLine(*version)) : std::nullopt;
    const bool isOlder = installed < generationOf(InstallCheckManager::getMacClientVersion());
    if (isOlder) {
        logVerbose("\"%@\" needs to update from %@ to %@", path, versionText, applicationVersion);
    } else {
        logVerbose("\"%@\" does not need to update from %@", path, versionText);
    }
    return isOlder;
}

std::string informationPathOfBundle(const std::string &installPath) {
    return installPath.empty() ? "" : installPath + "/Contents/Info.plist";
}

} // namespace

std::optional<ComponentVersion> InstallCheckManager::parseVersionString(std::string_view text) {
    return quillmark::parseVersionString(text);
}

std::optional<ComponentVersion> InstallCheckManager::getFrameworkVersion(const RequiredItem &item) const {
    const std::string folder = textOf(item, kInstallPath).value_or("");
    return installedVersion(folder + "/Versions/Current/Resources/Info.plist");
}

std::optional<ComponentVersion> InstallCheckManager::getBundleVersion(const RequiredItem &item) const {
    return installedVersion(informationPathOfBundle(textOf(item, kInstallPath).value_or("")));
}

bool InstallCheckManager::checkFrameworkVersion(const RequiredItem &item, const ComponentVersion &installed) {
    const auto text = textOf(item, kVersion);
    const auto required = text ? parseVersionString(*text) : std::nullopt;
    if (!required) {
        logDetail("Failed to parse version string \"%@\"", text);
        return false;
    }
    logDetail("Found framework version string \"%@\" parsed as %d.%d.%d", text, required->major, required->minor,
              required->bugfix);
    const bool isUpToDate = *required <= installed;
    if (isUpToDate) {
        logDetail("Found framework up-to-date");
    } else {
        logDetail("Found framework out-of-date");
    }
    return isUpToDate;
}

bool InstallCheckManager::doesToolNeedUpdate(const RequiredItem &item) const {
    const std::string path = textOf(item, kInstallPath).value_or("");
    const auto version = versionPrintedBy(path, platform().tasks);
    return needsUpdate(path, version, generationOf(getVersionFromString(version.value_or(""))));
}

bool InstallCheckManager::doesBundleNeedUpdate(const RequiredItem &item) const {
    const std::string path = textOf(item, kInstallPath).value_or("");
    const auto text = shortVersionIn(informationPathOfBundle(path));
    const auto version = text ? parseVersionString(*text) : std::nullopt;
    return !version || needsUpdate(path, text, {version->major, version->minor});
}

bool InstallCheckManager::getMacOSXVersion(std::int32_t &major, std::int32_t &minor, std::int32_t &bugfix) const {
    const SystemVersion version = platform().systemInfo.systemVersion();
    major = version.major.value_or(major);
    minor = version.minor.value_or(minor);
    bugfix = version.bugfix.value_or(bugfix);
    return version.major && version.minor && version.bugfix;
}

bool InstallCheckManager::isWithinLimit(const RequiredItem &item, std::string_view key, VersionLimit isMet) const {
    const auto limit = textOf(item, key);
    std::int32_t major = 0;
    std::int32_t minor = 0;
    std::int32_t bugfix = 0;
    return !limit || !getMacOSXVersion(major, minor, bugfix) || isMet(*limit, major, minor);
}

bool InstallCheckManager::checkMinMacOSXVersion(const RequiredItem &item) const {
    // Deliberate: "10.4" is never met, and "10.5" is not by systems after 10.
    return isWithinLimit(item, kMinMacOSXVersion, [](std::string_view limit, std::int32_t major, std::int32_t minor) {
        return (limit == "10.5" && major == 10 && minor > 4) || (limit == "10.6" && major > 10);
    });
}

bool InstallCheckManager::checkMaxMacOSXVersion(const RequiredItem &item) const {
    // Deliberate: "10.4" is met by 10.4 alone, the others by everything before them too.
    return isWithinLimit(item, kMaxMacOSXVersion, [](std::string_view limit, std::int32_t major, std::int32_t minor) {
        return major == 10 &&
               ((limit == "10.4" && minor == 4) || (limit == "10.5" && minor < 6) || (limit == "10.6" && minor < 7));
    });
}

std::string InstallCheckManager::getMacClientVersionAsString() { return versionOfThisAppAsString(true); }

MicrosoftStyleVersion InstallCheckManager::getVersionFromString(std::string_view text) {
    return microsoftStyleVersionFromString(text);
}

MicrosoftStyleVersion InstallCheckManager::getMacClientVersion() {
    return getVersionFromString(getMacClientVersionAsString());
}

std::optional<std::string> InstallCheckManager::shortVersionIn(const std::string &informationPath) const {
    return textOf(platform().propertyList.readDictionary(informationPath), "CFBundleShortVersionString");
}

std::optional<ComponentVersion> InstallCheckManager::installedVersion(const std::string &informationPath) const {
    const auto text = shortVersionIn(informationPath);
    return text ? parseVersionString(*text) : std::nullopt;
}

} // namespace quillmark
