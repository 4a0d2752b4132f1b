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

QVariantList readCatalogue(const Platform &platform) {
    const QString path = platform.mainBundle.pathForResource(QStringLiteral("RequiredItems"), QStringLiteral("plist"));
    const QVariant items = platform.propertyList.readDictionary(path).value(QStringLiteral("RequiredItems"));
    if (items.typeId() != QMetaType::QVariantList) { // others can be taken for a list too
        logError("The catalogue of required items (\"%@\") can't be read: no component is checked",
                 platform.mainBundle.resourcePath() + QStringLiteral("/RequiredItems.plist"));
        return {};
    }
    return items.toList();
}

} // namespace

InstallCheckManager &InstallCheckManager::sharedManager() {
    static InstallCheckManager manager(platform(), LocalizedStrings::sharedManager(), BrandingManager::sharedManager(),
                                       UpdateToolManager::sharedManager());
    return manager;
}

InstallCheckManager::InstallCheckManager(const Platform &platform, LocalizedStrings &strings,
                                         const BrandingManager &branding, UpdateToolManager &updateTool)
    : m_platform(platform), m_strings(strings), m_branding(branding), m_updateTool(updateTool),
      m_requiredItemsList(readCatalogue(platform)) {}

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
