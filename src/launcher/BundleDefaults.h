#pragma once

#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"

namespace quillmark {

/// Registers what the bundle's resource "Defaults" holds as the settings of a user who has not chosen others. Without
/// the resource nothing is registered.
inline void registerBundleDefaults() {
    const auto file = platform().mainBundle.pathForResource("Defaults", "plist");
    platform().userDefaults.registerDefaults(platform().propertyList.readDictionary(file.value_or("")));
}

} // namespace quillmark
