#include "accounts/KeyList.h"
#include "accounts/UserListIndex.h"
#include "accounts/UserManager.h"
#include "platform/MainThread.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "platform/files/Path.h"
#include "platform/values/Pieces.h"
#include "utils/ErrorText.h"
#include "utils/FileManager.h"
#include "utils/Log.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {

namespace {

/// The folder of all caches at a location.
std::string cachesFolderOf(std::string_view location) { return appendingPathComponent(location, ".QM"); }

bool isLink(const std::string &path) {
    std::error_code error;
    return std::filesystem::is_symlink(path, error);
}

/// Where a link leads to, as an absolute path; an empty text for what is not a link.
std::string targetOfLink(const std::filesystem::path &path) {
    std::error_code error;
    const std::filesystem::path target = std::filesystem::read_symlink(path, error);
    return error ? std::string() : normalPath(path.parent_path() / target);
}

/// A cache may have been moved to a bigger disk, with a link in its place.
bool leadsToFolderOfUser(const std::string &link) {
    struct stat target {};
    return ::stat(link.c_str(), &target) == 0 && S_ISDIR(target.st_mode) && target.st_uid == ::geteuid();
}

/// Why a cache at that place must not be deleted; absent when it may be. Whatever the record says, nothing but a folder
/// below LOCATION/.QM ever is.
std::optional<std::string> obstacleToRemoval(const std::string &location, const std::string &name) {
    if (!location.starts_with('/')) {
        return "its location is not an absolute path";
    }
    const std::string folder = cachesFolderOf(location);
    if (isLink(folder) && !leadsToFolderOfUser(folder)) {
        return "the link \"" + folder + "\" leads to no folder of the user's";
    }
    const std::string path = withoutNeedlessSlashes(name);
    for (const std::string_view component : pieces(path, '/')) {
        if (component.empty() || component == "." || component == "..") {
            return "its name can't be a folder's";
        }
    }
    for (size_t end = 0; (end = path.find('/', end)) != std::string::npos; ++end) {
        if (isLink(appendingPathComponent(folder, path.substr(0, end)))) {
            return "a link lies in its way";
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> UserManager::userCachePath(std::string_view userName) const {
    const auto location = recordText(kCacheLocation, userName);
    const auto name = recordText(kUserCacheName, userName);
    return location && name ? std::optional(appendingPathComponent(cachesFolderOf(*location), *name)) : std::nullopt;
}

void UserManager::removeUser(const std::string &userName, bool removeCache, RemovalObserver *sender) const {
    platform().mainThread.detachNewThread("removeUser", [manager = *this, userName, removeCache, sender]() mutable {
        const auto remainder = manager.removeUserAsync(userName, removeCache);
        if (sender != nullptr) {
            platform().mainThread.post([sender, remainder] {
                if (remainder) {
                    sender->cacheStays(remainder->path, remainder->reason);
                }
                sender->removeUserFinished();
            });
        }
    });
}

std::optional<UserManager::Remainder> UserManager::removeUserAsync(const std::string &userName, bool removeCache) {
    // The cache's place is part of the record.
    auto remainder = removeCache ? removeCacheOf(userName) : std::nullopt;
    if (remainder) {
        logError(R"(The cache "%@" of "%@" is not removed: %@)", remainder->path, userName, remainder->reason);
    }
    removeEntries([&userName](const Value &entry) { return isRecordOf(userName, entry); }, userName);
    return remainder;
}

std::optional<UserManager::Remainder> UserManager::removeCacheOf(const std::string &userName) const {
    const auto location = recordText(kCacheLocation, userName);
    const auto name = recordText(kUserCacheName, userName);
    if (!location || !name) {
        return std::nullopt;
    }
    const std::string path = appendingPathComponent(cachesFolderOf(*location), *name);
    if (auto obstacle = obstacleToRemoval(*location, *name)) {
        return Remainder{path, *std::move(obstacle)};
    }
    const std::string target = targetOfLink(path);
    if (const int error = __QMCurrentThreadFileManager().removeItem(path); error != 0) {
        return Remainder{path, posixErrorToString(error)};
    }
    return target.empty() ? std::nullopt : std::optional(Remainder{target, "only a link to it was the user's cache"});
}

bool UserManager::removeIncompleteUser(std::optional<std::string_view> userName) {
    return removeEntries(
        [&userName](const Value &entry) {
            return !entry.dictionary().contains(kUserUserName) || (userName && isRecordOf(*userName, entry));
        },
        userName);
}

bool UserManager::removeEntries(const std::function<bool(const Value &entry)> &isToGo,
                                std::optional<std::string_view> userName) {
    return change([&](UserDefaults &defaults) {
        List list = userList();
        std::erase_if(list, isToGo);
        defaults.setObject(kUserList, std::move(list));
        if (userName == lastUsedUserName()) {
            setLastUsedUserName(std::nullopt);
        }
    });
}

} // namespace quillmark
