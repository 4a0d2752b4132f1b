#include "utils/FileManager.h"

#include <QFile>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {

namespace {

bool exists(const QByteArray &path) { return ::access(path.constData(), F_OK) == 0; }

int makeFolder(const QByteArray &path, mode_t mode) {
    // Somebody else may have made it meanwhile.
    return ::mkdir(path.constData(), mode) == 0 || (errno == EEXIST && exists(path)) ? 0 : errno;
}

int makeFolders(const QByteArray &path, mode_t mode) {
    const qsizetype slash = path.lastIndexOf('/');
    if (slash > 0 && !exists(path.left(slash))) {
        if (const int error = makeFolders(path.left(slash), mode); error != 0) {
            return error;
        }
    }
    return makeFolder(path, mode);
}

} // namespace

bool FileManager::fileExists(const QString &path) const { return exists(QFile::encodeName(path)); }

int FileManager::createFolder(const QString &path, mode_t mode) const {
    QByteArray folder = QFile::encodeName(path);
    while (folder.size() > 1 && folder.endsWith('/')) {
        folder.chop(1);
    }
    return makeFolders(folder, mode);
}

FileManager &__QMCurrentThreadFileManager() {
    thread_local FileManager manager;
    return manager;
}

} // namespace quillmark
