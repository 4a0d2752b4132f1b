#include "utils/FileManager.h"

#include "platform/files/Path.h"
#include "platform/files/Tree.h"
#include "platform/files/TreeCopy.h"
#include "utils/ErrorText.h"

#include <algorithm>
#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace quillmark {

namespace {

std::string accountName(uid_t account) {
    constexpr size_t kRecordSize = 16384; // more than any system asks for
    std::vector<char> buffer(kRecordSize);
    passwd record{};
    passwd *found = nullptr;
    ::getpwuid_r(account, &record, buffer.data(), buffer.size(), &found);
    return found != nullptr ? found->pw_name : std::string();
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

Error posixError(int error, const std::string &failureReason) {
    return {kPosixErrorDomain,
            error,
            {{kLocalizedFailureReasonKey, failureReason}, {kLocalizedDescriptionKey, posixErrorToString(error)}}};
}

bool FileManager::fileExists(const std::string &path) const { return ::access(path.c_str(), F_OK) == 0; }

bool FileManager::isWritable(const std::string &path) const { return ::access(path.c_str(), W_OK) == 0; }

bool FileManager::isWithin(const std::string &path, const std::string &folder) const {
    namespace fs = std::filesystem;
    const auto location = [](const std::string &text) -> fs::path {
        std::error_code error;
        const fs::path whole = fs::absolute(normalPath(text), error);
        return fs::weakly_canonical(whole.parent_path(), error) / whole.filename();
    };
    const auto isBelow = [outer = location(folder)](const fs::path &inner) {
        return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
    };
    std::error_code error;
    return isBelow(location(path)) || isBelow(fs::weakly_canonical(path.c_str(), error));
}

std::optional<FileAttributes> FileManager::attributes(const std::string &path) const {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return FileAttributes{accountName(status.st_uid), status.st_mode & 07777U};
}

bool FileManager::isTrustedFile(const std::string &path, std::int64_t largest) const {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && isTrusted(status.st_uid) &&
           status.st_size <= largest;
}

std::optional<std::string> FileManager::folderOfOthers(const std::string &path) const {
    const std::string name = normalPath(path);
    struct stat folder {};
    ::lstat("/", &folder);
    for (size_t begin = 0; begin != std::string::npos;) {
        const size_t end = name.find('/', begin + 1);
        struct stat next {};
        const bool isThere = ::lstat(name.substr(0, end).c_str(), &next) == 0;
        if (!isThere) {
            next.st_uid = static_cast<uid_t>(-1); // anybody may make it
        }
        if (isOpenToOthers(folder, next)) {
            return begin == 0 ? "/" : name.substr(0, begin);
        }
        if (!isThere) {
            return std::nullopt;
        }
        folder = next;
        begin = end;
    }
    return std::nullopt;
}

std::optional<Error> FileManager::copyItem(const std::string &source, const std::string &target) const {
    const auto failure = copyTree(source, target);
    return failure ? std::optional(posixError(failure->error, "Copying stopped at '" + failure->path + "'"))
                   : std::nullopt;
}

int FileManager::removeItem(const std::string &path) const { return removeTree(path); }

int FileManager::createFolder(const std::string &path, mode_t mode) const { return makeFolders(path, mode); }

FileManager &__QMCurrentThreadFileManager() {
    thread_local FileManager manager;
    return manager;
}

} // namespace quillmark
