#include "launcher/BundleDefaults.h"

#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"

namespace quillmark {

void registerBundleDefaults(const Platform &platform) {
    const QString file = platform.mainBundle.pathForResource(QStringLiteral("Defaults"), QStringLiteral("plist"));
    platform.userDefaults.registerDefaults(platform.propertyList.readDictionary(file));
}

} // namespace quillmark
