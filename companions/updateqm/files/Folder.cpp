#include "files/Folder.h"

#include "process/Failure.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <memory>
#include <random>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace updateqm {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr mode_t kFolderMode = 0755;
constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;

struct stat statusOf(int descriptor, const std::string &what) {
    struct stat status {};
    must(::fstat(descriptor, &status) == 0, what);
    return status;
}

/// A right of a list of users counts only as far as the mode's middle part allows it.
bool admitsNobodyElse(const struct stat &status) { return status.st_uid == 0 && (status.st_mode & kOthersWrite) == 0; }

/// Whether nobody else can move away or exchange the administrator's things in it.
bool keepsAdministratorsThings(const struct stat &status) {
    return status.st_uid == 0 && ((status.st_mode & kOthersWrite) == 0 || (status.st_mode & S_ISVTX) != 0);
}

/// Whether a program answers for the file system, which may be anybody's: what it says of owners is worth nothing, and
/// it may never answer.
bool isProgramsFileSystem(int folder) {
    struct statfs facts {};
    return ::fstatfs(folder, &facts) != 0 || facts.f_type == FUSE_SUPER_MAGIC;
}

/// For each folder on the way, and the last one.
void requireAdministrators(const Folder &folder, bool isLast) {
    const auto status = statusOf(folder.get(), folder.path());
    if (!(isLast ? admitsNobodyElse(status) : keepsAdministratorsThings(status))) {
        throw Failure(Status::UnsafePlace, folder.path(), "can be changed by others than the administrator");
    }
}

} // namespace

template <class Check>
Folder Folder::walk(const std::string &path, bool makeMissing, const Check &check) {
    Folder folder(Descriptor(::open("/", kFolderFlags)), "/");
    check(folder, path.size() <= 1);
    for (size_t begin = 1; begin < path.size();) {
        const size_t end = std::min(path.find('/', begin), path.size());
        const std::string name = path.substr(begin, end - begin);
        const bool isNew = makeMissing && ::mkdirat(folder.get(), name.c_str(), kFolderMode) == 0;
        must(isNew || !makeMissing || errno == EEXIST, path.substr(0, end));
        folder = folder.inner(name);
        if (isNew) {
            dropAccessLists(folder.get(), folder.path());
        }
        check(folder, end == path.size());
        begin = end + 1;
    }
    return folder;
}

Folder Folder::open(const std::string &path) {
    return walk(path, false, [](const Folder &, bool) {});
}

Folder Folder::openAdministrators(const std::string &path) { return walk(path, false, requireAdministrators); }

Folder Folder::makeAdministrators(const std::string &path) { return walk(path, true, requireAdministrators); }

Folder Folder::inner(const std::string &name) const {
    const std::string path = (m_path == "/" ? "" : m_path) + '/' + name;
    Descriptor descriptor(::openat(get(), name.c_str(), kFolderFlags));
    if (!descriptor.isOpen()) {
        const bool isInTheWay = errno == ELOOP || errno == ENOTDIR;
        throw isInTheWay ? Failure(Status::UnsafePlace, path, "is a link or no folder")
                         : systemFailure(Status::WrongPlace, path);
    }
    return {std::move(descriptor), path};
}

Folder Folder::takeInner(const std::string &name) const {
    const bool isNew = ::mkdirat(get(), name.c_str(), kFolderMode) == 0;
    must(isNew || errno == EEXIST, m_path + '/' + name);
    Folder folder = inner(name);
    const auto status = statusOf(folder.get(), folder.path());
    const bool wasAdministrators = admitsNobodyElse(status);
    const bool isMounted = status.st_dev != statusOf(get(), m_path).st_dev;
    if (isMounted && (!wasAdministrators || isProgramsFileSystem(folder.get()))) {
        throw Failure(Status::UnsafePlace, folder.path(), "is another file system's");
    }
    // The owner first: a former one could take the rest back.
    must(::fchown(folder.get(), 0, 0) == 0, folder.path());
    dropAccessLists(folder.get(), folder.path());
    must(::fchmod(folder.get(), statusOf(folder.get(), folder.path()).st_mode & kFolderMode) == 0, folder.path());
    if (!wasAdministrators) {
        folder.setFoldersAside();
    }
    return folder;
}

void Folder::setFoldersAside() const {
    for (const std::string &name : entriesOf(get(), m_path)) {
        struct stat status {};
        if (::fstatat(get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode)) {
            must(::renameat(get(), name.c_str(), get(), newName("set-aside-").c_str()) == 0, m_path + '/' + name);
        }
    }
}

bool Folder::isAdministratorsAlone() const { return admitsNobodyElse(statusOf(get(), m_path)); }

std::vector<std::string> entriesOf(int folder, const std::string &what) {
    std::vector<std::string> names;
    const int own = ::openat(folder, ".", kFolderFlags);
    const std::unique_ptr<DIR, int (*)(DIR *)> stream(own >= 0 ? ::fdopendir(own) : nullptr, ::closedir);
    must(stream != nullptr, what);
    errno = 0;
    while (const dirent *const entry = ::readdir(stream.get())) { // NOLINT(concurrency-mt-unsafe): there is one thread
        if (const std::string name = static_cast<const char *>(entry->d_name); name != "." && name != "..") {
            names.push_back(name);
        }
        errno = 0;
    }
    must(errno == 0, what);
    return names;
}

void dropAccessLists(int folder, const std::string &what) {
    for (const char *const list : {"system.posix_acl_access", "system.posix_acl_default"}) {
        must(::fremovexattr(folder, list) == 0 || errno == ENODATA || errno == EOPNOTSUPP, what);
    }
}

std::string newName(const std::string &prefix) {
    std::random_device device;
    std::array<char, 20> number{};
    std::snprintf(number.data(), number.size(), "%08x%08x", device(), device());
    return prefix + number.data();
}

} // namespace updateqm
