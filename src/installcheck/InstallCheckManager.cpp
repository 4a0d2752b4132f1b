#include "installcheck/InstallCheckManager.h"

#include "accounts/KeyList.h"
#include "branding/LocalizedStrings.h"
#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/PropertyList.h"
#include "tools/UpdateToolManager.h"
#include "utils/Log.h"

namespace quillmark {

namespace {

QVariantMap readCatalogue(const Platform &platform) {
    const QString path = platform.mainBundle.pathForResource(QStringLiteral("RequiredItems"), QStringLiteral("plist"));
    QVariantMap catalogue = platform.propertyList.readDictionary(path);
    if (catalogue.value(QStringLiteral("RequiredItems")).typeId() != QMetaType::QVariantList) {
        logError("The catalogue of required items (\"%@\") can't be read: no component is checked",
                 platform.mainBundle.resourcePath() + QStringLiteral("/RequiredItems.plist"));
    }
    return catalogue;
}

} // namespace

InstallCheckManager &InstallCheckManager::sharedManager() {
    static InstallCheckManager manager(platform(), LocalizedStrings::sharedManager(),
                                       UpdateToolManager::sharedManager());
    return manager;
}

InstallCheckManager::InstallCheckManager(const Platform &platform, LocalizedStrings &strings,
                                         UpdateToolManager &updateTool)
    : m_platform(platform), m_strings(strings), m_updateTool(updateTool), m_requiredItems(readCatalogue(platform)),
      m_requiredItemsList(m_requiredItems.value(QStringLiteral("RequiredItems")).toList()) {}

bool InstallCheckManager::checkForRequiredItems() {
    updateStatus();
    return m_numberRepairsRequired == 0 && m_numberItemsMissing == 0;
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
