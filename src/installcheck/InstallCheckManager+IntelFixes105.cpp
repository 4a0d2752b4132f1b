#include "installcheck/InstallCheckManager.h"
#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "tools/UpdateToolManager.h"

namespace quillmark {

bool InstallCheckManager::areIntel_10_5FixesRequired() const {
    std::int32_t major = 0;
    std::int32_t minor = 0;
    std::int32_t bugfix = 0;
    return getMacOSXVersion(major, minor, bugfix) && major == 10 && minor == 5 &&
           platform().systemInfo.isIntel().value_or(false);
}

bool InstallCheckManager::installIntel_10_5_Fixes() {
    return m_updateTool.repairIntel10_5(resourcePath("Fixes10_5.zip"), resourcePath("Fixes10_5.plist")) ==
           UpdateToolManager::kSucceeded;
}

} // namespace quillmark
