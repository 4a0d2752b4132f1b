#include "accounts/KeyList.h"
#include "accounts/UserListIndex.h"
#include "accounts/UserManager.h"
#include "platform/MainThread.h"
#include "platform/Path.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "utils/ErrorText.h"
#include "utils/FileManager.h"
#include "utils/Log.h"

#include <QFile>
#include <QFileInfo>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {

namespace {

/// The folder of all caches at a location.
QString cachesFolderOf(const QString &location) { return appendingPathComponent(location, QStringLiteral(".QM")); }

/// A cache may have been moved to a bigger disk, with a link in its place.
bool leadsToFolderOfUser(const QString &link) {
    struct stat target {};
    return ::stat(QFile::encodeName(link).constData(), &target) == 0 && S_ISDIR(target.st_mode) &&
           target.st_uid == ::geteuid();
}

/// Why a cache at that place must not be deleted; null when it may be. Whatever the record says, nothing but a folder
/// below LOCATION/.QM ever is.
QString obstacleToRemoval(const QString &location, const QString &name) {
    if (!location.startsWith(u'/')) {
        return QStringLiteral("its location is no absolute path");
    }
    QString folder = cachesFolderOf(location);
    if (QFileInfo(folder).isSymLink() && !leadsToFolderOfUser(folder)) {
        return QStringLiteral("the link \"%1\" leads to no folder of the user's").arg(folder);
    }
    const QStringList components = withoutNeedlessSlashes(name).split(u'/');
    for (const QString &component : components) {
        if (component.isEmpty() || component == u"." || component == u"..") {
            return QStringLiteral("its name is no name of a folder");
        }
    }
    for (const QString &component : components.first(components.size() - 1)) {
        folder = appendingPathComponent(folder, component);
        if (QFileInfo(folder).isSymLink()) {
            return QStringLiteral("a link lies in its way");
        }
    }
    return {};
}

} // namespace

QString UserManager::userCachePath(const QString &userName) const {
    const QString location = recordText(kCacheLocation, userName);
    const QString name = recordText(kUserCacheName, userName);
    return location.isNull() || name.isNull() ? QString() : appendingPathComponent(cachesFolderOf(location), name);
}

void UserManager::removeUser(const QString &userName, bool removeCache, RemovalObserver *sender) const {
    m_platform->mainThread.detachNewThread(QStringLiteral("removeUser"),
                                           [manager = *this, userName, removeCache, sender]() mutable {
                                               const auto remainder = manager.removeUserAsync(userName, removeCache);
                                               if (sender != nullptr) {
                                                   manager.m_platform->mainThread.post([sender, remainder] {
                                                       if (remainder) {
                                                           sender->cacheStays(remainder->path, remainder->reason);
                                                       }
                                                       sender->removeUserFinished();
                                                   });
                                               }
                                           });
}

std::optional<UserManager::Remainder> UserManager::removeUserAsync(const QString &userName, bool removeCache) {
    // The cache's place is part of the record.
    auto remainder = removeCache ? removeCacheOf(userName) : std::nullopt;
    if (remainder) {
        logError(R"(The cache "%@" of "%@" is not removed: %@)", remainder->path, userName, remainder->reason);
    }
    removeEntries([&userName](const QVariant &entry) { return isRecordOf(userName, entry); }, userName);
    return remainder;
}

std::optional<UserManager::Remainder> UserManager::removeCacheOf(const QString &userName) const {
    const QString path = userCachePath(userName);
    if (path.isNull()) {
        return std::nullopt;
    }
    const QString obstacle =
        obstacleToRemoval(recordText(kCacheLocation, userName), recordText(kUserCacheName, userName));
    if (!obstacle.isNull()) {
        return Remainder{path, obstacle};
    }
    const QString target = QFileInfo(path).symLinkTarget();
    if (const int error = __QMCurrentThreadFileManager().removeItem(path); error != 0) {
        return Remainder{path, posixErrorToString(error)};
    }
    return target.isEmpty()
               ? std::nullopt
               : std::optional(Remainder{target, QStringLiteral("only a link to it was the user's cache")});
}

bool UserManager::removeIncompleteUser(const QString &userName) {
    return removeEntries(
        [&userName](const QVariant &entry) {
            return !entry.toMap().contains(kUserUserName) || isRecordOf(userName, entry);
        },
        userName);
}

bool UserManager::removeEntries(const std::function<bool(const QVariant &entry)> &isToGo, const QString &userName) {
    return change([&](UserDefaults &defaults) {
        QVariantList list = userList();
        list.removeIf(isToGo);
        defaults.setObject(kUserList, list);
        if (!userName.isNull() && userName == lastUsedUserName()) {
            setLastUsedUserName(QString());
        }
    });
}

} // namespace quillmark
