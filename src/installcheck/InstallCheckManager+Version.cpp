#include "accounts/KeyList.h"
#include "installcheck/InstallCheckManager.h"
#include "platform/Platform.h"
#include "platform/PropertyList.h"
#include "platform/SystemInfo.h"
#include "platform/Tasks.h"
#include "tools/VersionOutput.h"
#include "utils/Log.h"
#include "utils/OneLine.h"
#include "utils/Version.h"

#include <compare>

namespace quillmark {

namespace {

/// The parts of a version that decide whether a component fits this application.
struct Generation {
    qint32 major;
    qint32 minor;

    auto operator<=>(const Generation &) const = default; // NOLINT(modernize-use-nullptr): takes the 0 inside for one
};

Generation generationOf(const MicrosoftStyleVersion &version) {
    return {static_cast<qint32>(version.major), static_cast<qint32>(version.minor)};
}

bool needsUpdate(const QString &path, const QString &versionText, Generation installed) {
    const QString applicationVersion = InstallCheckManager::getMacClientVersionAsString();
    const bool isOlder = installed < generationOf(InstallCheckManager::getMacClientVersion());
    if (isOlder) {
        logVerbose("\"%@\" needs to update from %@ to %@", path, onOneLine(versionText), applicationVersion);
    } else {
        logVerbose("\"%@\" does not need to update from %@", path, onOneLine(versionText));
    }
    return isOlder;
}

QString informationPathOfBundle(const QString &installPath) {
    return installPath.isEmpty() ? QString() : installPath + QStringLiteral("/Contents/Info.plist");
}

} // namespace

std::optional<ComponentVersion> InstallCheckManager::parseVersionString(const QString &text) {
    return quillmark::parseVersionString(text);
}

std::optional<ComponentVersion> InstallCheckManager::getFrameworkVersion(const RequiredItem &item) const {
    const QString folder = textOf(item, kInstallPath);
    return installedVersion(folder + QStringLiteral("/Versions/Current/Resources/Info.plist"));
}

std::optional<ComponentVersion> InstallCheckManager::getBundleVersion(const RequiredItem &item) const {
    return installedVersion(informationPathOfBundle(textOf(item, kInstallPath)));
}

bool InstallCheckManager::checkFrameworkVersion(const RequiredItem &item, const ComponentVersion &installed) {
    const QString text = textOf(item, kVersion);
    const auto required = text.isEmpty() ? std::nullopt : parseVersionString(text);
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
    const QString path = textOf(item, kInstallPath);
    const QString version = versionPrintedBy(path, m_platform.tasks);
    return needsUpdate(path, version, generationOf(getVersionFromString(version)));
}

bool InstallCheckManager::doesBundleNeedUpdate(const RequiredItem &item) const {
    const QString path = textOf(item, kInstallPath);
    const QString text = shortVersionIn(informationPathOfBundle(path));
    const auto version = text.isEmpty() ? std::nullopt : parseVersionString(text);
    return !version || needsUpdate(path, text, {version->major, version->minor});
}

bool InstallCheckManager::getMacOSXVersion(qint32 &major, qint32 &minor, qint32 &bugfix) const {
    const SystemVersion version = m_platform.systemInfo.systemVersion();
    major = version.major.value_or(major);
    minor = version.minor.value_or(minor);
    bugfix = version.bugfix.value_or(bugfix);
    return version.major && version.minor && version.bugfix;
}

bool InstallCheckManager::checkMinMacOSXVersion(const RequiredItem &item) const {
    const QString limit = textOf(item, kMinMacOSXVersion);
    qint32 major = 0;
    qint32 minor = 0;
    qint32 bugfix = 0;
    if (limit.isNull() || !getMacOSXVersion(major, minor, bugfix)) {
        return true;
    }
    // Deliberate: "10.4" is never met, and "10.5" is not by systems after 10.
    return (limit == u"10.5" && major == 10 && minor > 4) || (limit == u"10.6" && major > 10);
}

bool InstallCheckManager::checkMaxMacOSXVersion(const RequiredItem &item) const {
    const QString limit = textOf(item, kMaxMacOSXVersion);
    qint32 major = 0;
    qint32 minor = 0;
    qint32 bugfix = 0;
    if (limit.isNull() || !getMacOSXVersion(major, minor, bugfix)) {
        return true;
    }
    // Deliberate: "10.4" is met by 10.4 alone, the others by everything before them too.
    return major == 10 &&
           ((limit == u"10.4" && minor == 4) || (limit == u"10.5" && minor < 6) || (limit == u"10.6" && minor < 7));
}

QString InstallCheckManager::getMacClientVersionAsString() { return versionOfThisAppAsString(true); }

MicrosoftStyleVersion InstallCheckManager::getVersionFromString(const QString &text) {
    return microsoftStyleVersionFromString(text);
}

MicrosoftStyleVersion InstallCheckManager::getMacClientVersion() {
    return getVersionFromString(getMacClientVersionAsString());
}

QString InstallCheckManager::shortVersionIn(const QString &informationPath) const {
    return informationPath.isEmpty() ? QString()
                                     : textOf(m_platform.propertyList.readDictionary(informationPath),
                                              QStringLiteral("CFBundleShortVersionString"));
}

std::optional<ComponentVersion> InstallCheckManager::installedVersion(const QString &informationPath) const {
    const QString text = shortVersionIn(informationPath);
    return text.isEmpty() ? std::nullopt : parseVersionString(text);
}

} // namespace quillmark
