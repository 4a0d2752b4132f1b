#include "utils/Folders.h"

#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "utils/Assert.h"
#include "utils/Exception.h"
#include "utils/FileManager.h"
#include "utils/Log.h"

namespace quillmark {

void ensureFolderPathExists(const std::optional<std::string> &folderPath) {
    constexpr mode_t kMode = 0777;
    QUILLMARK_ASSERT(folderPath, "folderPath", "utils");
    const FileManager &files = __QMCurrentThreadFileManager();
    if (files.fileExists(*folderPath)) {
        return;
    }
    if (const int error = files.createFolder(*folderPath, kMode); error != 0) {
        const std::string description = platform().systemInfo.posixErrorText(error).value_or(std::to_string(error));
        throw Exception(kGenericException, "Failed to create \"" + *folderPath + "\" (" + description + ')');
    }
    logVerbose("\"%@\" subfolder missing - created it", folderPath);
}

} // namespace quillmark
