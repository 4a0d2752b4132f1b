#include "installcheck/InstallCheckManager.h"
#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "tools/UpdateToolManager.h"

namespace quillmark {

bool InstallCheckManager::areIntel_10_5FixesRequired() const {
    qint32 major = 0;
    qint32 minor = 0;
    qint32 bugfix = 0;
    return getMacOSXVersion(major, minor, bugfix) && major == 10 && minor == 5 &&
           m_platform.systemInfo.isIntel().value_or(false);
}

bool InstallCheckManager::installIntel_10_5_Fixes() {
    return m_updateTool.repairIntel10_5(resourcePath(QStringLiteral("Fixes10_5.zip")),
                                        resourcePath(QStringLiteral("Fixes10_5.plist"))) ==
           UpdateToolManager::kSucceeded;
}

} // namespace quillmark
