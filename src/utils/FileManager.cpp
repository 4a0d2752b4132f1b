#include "utils/FileManager.h"

#include "platform/Tree.h"
#include "utils/ErrorText.h"

#include <QDir>
#include <QFile>
#include <algorithm>
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

bool isTrusted(uid_t owner) { return owner == 0 || owner == ::geteuid(); }

/// Whether others can put something else in the place of the next thing on the way, which is in the folder. Where
/// everybody may write but each keeps his own, as in /tmp, it is safe by its owner. The administrators' own group is no
/// others.
bool isOpenToOthers(const struct stat &folder, const struct stat &next) {
#ifdef __APPLE__
    constexpr gid_t kAdministrators = 80;
#else
    constexpr gid_t kAdministrators = 0;
#endif
    const bool isWritable =
        (folder.st_mode & S_IWOTH) != 0 || ((folder.st_mode & S_IWGRP) != 0 && folder.st_gid != kAdministrators);
    return !S_ISDIR(folder.st_mode) || !isTrusted(folder.st_uid) ||
           (isWritable && ((folder.st_mode & S_ISVTX) == 0 || !isTrusted(next.st_uid)));
}

} // namespace

bool FileManager::fileExists(const QString &path) const { return exists(QFile::encodeName(path)); }

bool FileManager::isWritable(const QString &path) const {
    return ::access(QFile::encodeName(path).constData(), W_OK) == 0;
}

bool FileManager::isWithin(const QString &path, const QString &folder) const {
    namespace fs = std::filesystem;
    const auto location = [](const QString &text) -> fs::path {
        std::error_code error;
        const fs::path whole = fs::absolute(QFile::encodeName(QDir::cleanPath(text)).constData(), error);
        return fs::weakly_canonical(whole.parent_path(), error) / whole.filename();
    };
    const auto isBelow = [outer = location(folder)](const fs::path &inner) {
        return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
    };
    std::error_code error;
    return isBelow(location(path)) || isBelow(fs::weakly_canonical(QFile::encodeName(path).constData(), error));
}

std::optional<FileAttributes> FileManager::attributes(const QString &path) const {
    struct stat status {};
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0) {
        return std::nullopt;
    }
    return FileAttributes{accountName(status.st_uid), status.st_mode & 07777U};
}

bool FileManager::isTrustedFile(const QString &path, qint64 largest) const {
    struct stat status {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 && S_ISREG(status.st_mode) &&
           isTrusted(status.st_uid) && status.st_size <= largest;
}

std::optional<QString> FileManager::folderOfOthers(const QString &path) const {
    const QByteArray name = QFile::encodeName(QDir::cleanPath(path));
    struct stat folder {};
    ::lstat("/", &folder);
    for (qsizetype begin = 0; begin >= 0;) {
        const qsizetype end = name.indexOf('/', begin + 1);
        struct stat next {};
        const bool isThere = ::lstat((end < 0 ? name : name.left(end)).constData(), &next) == 0;
        if (!isThere) {
            next.st_uid = static_cast<uid_t>(-1); // anybody may make it
        }
        if (isOpenToOthers(folder, next)) {
            return begin == 0 ? QStringLiteral("/") : QFile::decodeName(name.left(begin));
        }
        if (!isThere) {
            return std::nullopt;
        }
        folder = next;
        begin = end;
    }
    return std::nullopt;
}

std::optional<Error> FileManager::copyItem(const QString &source, const QString &target) const {
    const auto failure = copyTree(source.toStdString(), target.toStdString());
    if (!failure) {
        return std::nullopt;
    }
    return Error{kPosixErrorDomain,
                 failure->error,
                 {{kLocalizedFailureReasonKey,
                   QStringLiteral("Copying stopped at '%1'").arg(QString::fromStdString(failure->path))},
                  {kLocalizedDescriptionKey, posixErrorToString(failure->error)}}};
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
