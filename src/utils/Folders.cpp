#include "utils/Folders.h"

#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "utils/Assert.h"
#include "utils/Exception.h"
#include "utils/FormattedText.h"
#include "utils/Log.h"
#include "utils/Raise.h"

#include <QFile>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {

namespace {

bool exists(const QByteArray &path) { return ::access(path.constData(), F_OK) == 0; }

/// \returns 0, or the errno of the folder that could not be made.
int makeFolder(const QByteArray &path) {
    constexpr mode_t kMode = 0777;
    // Somebody else may have made it meanwhile.
    return ::mkdir(path.constData(), kMode) == 0 || (errno == EEXIST && exists(path)) ? 0 : errno;
}

/// The same with all folders above it.
int makeFolders(const QByteArray &path) {
    const qsizetype slash = path.lastIndexOf('/');
    if (slash > 0 && !exists(path.left(slash))) {
        if (const int error = makeFolders(path.left(slash)); error != 0) {
            return error;
        }
    }
    return makeFolder(path);
}

QByteArray withoutTrailingSlashes(QByteArray path) {
    while (path.size() > 1 && path.endsWith('/')) {
        path.chop(1);
    }
    return path;
}

} // namespace

void ensureFolderPathExists(const QString &folderPath) {
    QUILLMARK_ASSERT(!folderPath.isNull(), "folderPath", "utils");
    const QByteArray path = withoutTrailingSlashes(QFile::encodeName(folderPath));
    if (exists(path)) {
        return;
    }
    if (const int error = makeFolders(path); error != 0) {
        const QString description = platform().systemInfo.posixErrorText(error).value_or(QString::number(error));
        throw Exception(kGenericException, formatted("Failed to create \"%@\" (%@)", folderPath, description));
    }
    logVerbose("\"%@\" subfolder missing - created it", folderPath);
}

} // namespace quillmark
