#include "accounts/KeyList.h"
#include "accounts/UserListIndex.h"
#include "accounts/UserManager.h"
#include "platform/MainThread.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "utils/FileManager.h"
#include "utils/Log.h"

#include <QFileInfo>

namespace quillmark {

namespace {

constexpr QStringView kCacheFolder = u".QM";

/// The two with one slash between them.
QString joined(const QString &folder, QStringView name) {
    return (folder.endsWith(u'/') ? folder.chopped(1) : folder) + u'/' + name.toString();
}

/// Why a cache at that place must not be deleted; null when it may be. Whatever the record says, nothing but a folder
/// below LOCATION/.QM ever is.
QString obstacleToRemoval(const QString &location, const QString &name) {
    if (!location.startsWith(u'/')) {
        return QStringLiteral("its location is no absolute path");
    }
    QString folder = joined(location, kCacheFolder);
    for (const QString &component : name.split(u'/')) {
        if (component.isEmpty() || component == u"." || component == u"..") {
            return QStringLiteral("its name is no name of a folder");
        }
        if (QFileInfo(folder).isSymLink()) {
            return QStringLiteral("a link lies in its way");
        }
        folder = joined(folder, component);
    }
    return {};
}

} // namespace

QString UserManager::userCachePath(const QString &userName) const {
    const QString location = recordText(kCacheLocation, userName);
    const QString name = recordText(kUserCacheName, userName);
    return location.isNull() || name.isNull() ? QString() : joined(joined(location, kCacheFolder), name);
}

void UserManager::removeUser(const QString &userName, bool removeCache, RemovalObserver *sender) const {
    m_platform->mainThread.detachNewThread(
        QStringLiteral("removeUser"), [manager = *this, userName, removeCache, sender]() mutable {
            manager.removeUserAsync(userName, removeCache);
            if (sender != nullptr) {
                manager.m_platform->mainThread.post([sender] { sender->removeUserFinished(); });
            }
        });
}

void UserManager::removeUserAsync(const QString &userName, bool removeCache) {
    if (removeCache) {
        removeCacheOf(userName); // its place is part of the record
    }
    removeEntries([&userName](const QVariant &entry) { return isRecordOf(userName, entry); }, userName);
}

void UserManager::removeCacheOf(const QString &userName) const {
    const QString path = userCachePath(userName);
    if (path.isNull()) {
        return;
    }
    const QString obstacle =
        obstacleToRemoval(recordText(kCacheLocation, userName), recordText(kUserCacheName, userName));
    if (obstacle.isNull()) {
        __QMCurrentThreadFileManager().removeItem(path);
    } else {
        logError(R"(The cache "%@" of "%@" is not removed: %@)", path, userName, obstacle);
    }
}

bool UserManager::removeIncompleteUser(const QString &userName) {
    return removeEntries(
        [&userName](const QVariant &entry) {
            return !entry.toMap().contains(kUserUserName) || isRecordOf(userName, entry);
        },
        userName);
}

bool UserManager::removeEntries(const std::function<bool(const QVariant &entry)> &isToGo, const QString &userName) {
    QVariantList list = userList();
    list.removeIf(isToGo);
    m_platform->userDefaults.setObject(kUserList, list);
    if (!userName.isNull() && userName == lastUsedUserName()) {
        setLastUsedUserName(QString());
    }
    return save();
}

} // namespace quillmark
