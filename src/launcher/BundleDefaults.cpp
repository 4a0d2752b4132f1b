#include "launcher/BundleDefaults.h"

#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"

namespace quillmark {

void registerBundleDefaults() {
    const auto file = platform().mainBundle.pathForResource("Defaults", "plist");
    platform().userDefaults.registerDefaults(platform().propertyList.readDictionary(file.value_or("")));
}

} // namespace quillmark
