#include "installcheck/InstallCheckManager.h"

#include "accounts/KeyList.h"
#include "branding/BrandingManager.h"
#include "branding/LocalizedStrings.h"
#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/PropertyList.h"
#include "tools/UpdateToolManager.h"
#include "utils/Log.h"

namespace quillmark {

namespace {

/// Invalid when it can't be read.
QVariant readCatalogue(const Platform &platform) {
    const QString path = platform.mainBundle.pathForResource(QStringLiteral("RequiredItems"), QStringLiteral("plist"));
    const QVariant items = platform.propertyList.readDictionary(path).value(QStringLiteral("RequiredItems"));
    return items.typeId() == QMetaType::QVariantList ? items : QVariant(); // others can be taken for a list too
}

} // namespace

InstallCheckManager &InstallCheckManager::sharedManager() {
    // Never destroyed, since other threads may ask until the very end.
    static auto &manager =
        *new InstallCheckManager(platform(), LocalizedStrings::sharedManager(), BrandingManager::sharedManager(),
                                 UpdateToolManager::sharedManager());
    return manager;
}

InstallCheckManager::InstallCheckManager(const Platform &platform, LocalizedStrings &strings,
                                         const BrandingManager &branding, UpdateToolManager &updateTool)
    : InstallCheckManager(platform, strings, branding, updateTool, readCatalogue(platform)) {}

InstallCheckManager::InstallCheckManager(const Platform &platform, LocalizedStrings &strings,
                                         const BrandingManager &branding, UpdateToolManager &updateTool,
                                         const QVariant &catalogue)
    : m_platform(platform), m_strings(strings), m_branding(branding), m_updateTool(updateTool),
      m_isCatalogueReadable(catalogue.isValid()), m_requiredItemsList(catalogue.toList()) {}

bool InstallCheckManager::checkForRequiredItems() {
    updateStatus();
    if (m_numberRepairsRequired == 0 && m_numberItemsMissing == 0) {
        return true;
    }
    runSelfRepair();
    return false;
}

QString InstallCheckManager::pathToRequiredItemInResources(const RequiredItem &item) const {
    return resourcePath(textOf(item, kResource));
}

QString InstallCheckManager::pathToRequiredItemInstallerInResources(const RequiredItem &item) const {
    return resourcePath(textOf(item, kInstaller));
}

QString InstallCheckManager::pathToRequiredItemSignatureInResources(const RequiredItem &item) const {
    return resourcePath(textOf(item, kSignature));
}

QString InstallCheckManager::resourcePath(const QString &fileName) const {
    const QString folder = m_platform.mainBundle.resourcePath();
    return fileName.isEmpty() ? folder : folder + u'/' + fileName;
}

QString textOf(const RequiredItem &item, const QString &key) {
    const QVariant value = item.value(key);
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

} // namespace quillmark
