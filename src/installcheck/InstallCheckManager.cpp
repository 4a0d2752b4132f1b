#include "installcheck/InstallCheckManager.h"

#include "accounts/KeyList.h"
#include "branding/BrandingManager.h"
#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/PropertyList.h"
#include "texts/LocalizedStrings.h"
#include "tools/UpdateToolManager.h"
#include "utils/Log.h"

namespace quillmark {

namespace {

/// Nothing when it can't be read.
Value readCatalogue() {
    const auto path = platform().mainBundle.pathForResource("RequiredItems", "plist");
    return path ? valueOf(platform().propertyList.readDictionary(*path), "RequiredItems") : Value();
}

} // namespace

InstallCheckManager &InstallCheckManager::sharedManager() {
    // Never destroyed, since other threads may ask until the very end.
    static auto &manager = *new InstallCheckManager(LocalizedStrings::sharedManager(), BrandingManager::sharedManager(),
                                                    UpdateToolManager::sharedManager());
    return manager;
}

InstallCheckManager::InstallCheckManager(LocalizedStrings &strings, const BrandingManager &branding,
                                         UpdateToolManager &updateTool)
    : m_strings(strings), m_branding(branding), m_updateTool(updateTool), m_catalogue(readCatalogue()) {}

bool InstallCheckManager::checkForRequiredItems() {
    updateStatus();
    if (m_numberRepairsRequired == 0 && m_numberItemsMissing == 0) {
        return true;
    }
    runSelfRepair();
    return false;
}

std::string InstallCheckManager::pathToRequiredItemInResources(const RequiredItem &item) const {
    return resourcePath(textOf(item, kResource).value_or(""));
}

std::string InstallCheckManager::pathToRequiredItemInstallerInResources(const RequiredItem &item) const {
    return resourcePath(textOf(item, kInstaller).value_or(""));
}

std::string InstallCheckManager::pathToRequiredItemSignatureInResources(const RequiredItem &item) const {
    return resourcePath(textOf(item, kSignature).value_or(""));
}

std::string InstallCheckManager::resourcePath(const std::string &fileName) const {
    const std::string folder = platform().mainBundle.resourcePath();
    return fileName.empty() ? folder : folder + '/' + fileName;
}

std::optional<std::string> textOf(const RequiredItem &item, std::string_view key) { return valueOf(item, key).text(); }

} // namespace quillmark
