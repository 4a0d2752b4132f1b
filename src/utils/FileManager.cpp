#include "utils/FileManager.h"

#include <QFile>
#include <cerrno>
#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

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

QString accountName(uid_t account) {
    constexpr size_t kRecordSize = 16384; // more than any system asks for
    std::vector<char> buffer(kRecordSize);
    passwd record{};
    passwd *found = nullptr;
    ::getpwuid_r(account, &record, buffer.data(), buffer.size(), &found);
    return found != nullptr ? QString::fromLocal8Bit(found->pw_name) : QString();
}

} // namespace

bool FileManager::fileExists(const QString &path) const { return exists(QFile::encodeName(path)); }

std::optional<FileAttributes> FileManager::attributes(const QString &path) const {
    struct stat status {};
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0) {
        return std::nullopt;
    }
    return FileAttributes{accountName(status.st_uid), status.st_mode & 07777U};
}

int FileManager::copyFile(const QString &source, const QString &target) const {
    std::error_code error;
    std::filesystem::copy_file(QFile::encodeName(source).constData(), QFile::encodeName(target).constData(), error);
    return error.value();
}

int FileManager::removeItem(const QString &path) const {
    std::error_code error;
    std::filesystem::remove_all(QFile::encodeName(path).constData(), error);
    return error.value();
}

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
