#include "Folder.h"

#include "Failure.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <random>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace updateqm {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr std::string_view kStagingPrefix = ".quillmark-";

Descriptor openFolder(int folder, const std::string &name) {
    return Descriptor(::openat(folder, name.c_str(), kFolderFlags));
}

/// The names in a folder, without the two that every folder has.
std::vector<std::string> entriesOf(int folder) {
    std::vector<std::string> names;
    const int own = ::openat(folder, ".", kFolderFlags);
    const std::unique_ptr<DIR, int (*)(DIR *)> stream(own >= 0 ? ::fdopendir(own) : nullptr, ::closedir);
    while (stream != nullptr) {
        const dirent *const entry = ::readdir(stream.get()); // NOLINT(concurrency-mt-unsafe): there is one thread
        if (entry == nullptr) {
            break;
        }
        if (const std::string name = static_cast<const char *>(entry->d_name); name != "." && name != "..") {
            names.push_back(name);
        }
    }
    return names;
}

bool isAdministrators(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && status.st_uid == 0;
}

std::string newStagingName() {
    std::random_device device;
    std::array<char, 40> name{};
    std::snprintf(name.data(), name.size(), "%s%08x%08x", kStagingPrefix.data(), device(), device());
    return name.data();
}

/// Removes what a killed process has left. One that is in use is locked.
void clearLeftOvers(int folder) {
    for (const std::string &name : entriesOf(folder)) {
        if (!name.starts_with(kStagingPrefix)) {
            continue;
        }
        const Descriptor leftOver = openFolder(folder, name);
        if (leftOver.isOpen() && isAdministrators(leftOver.get()) && ::flock(leftOver.get(), LOCK_EX | LOCK_NB) == 0) {
            removeTree(folder, name);
        }
    }
}

void must(bool isDone, const std::string &what) {
    if (!isDone) {
        throw systemFailure(Status::CannotWrite, what);
    }
}

} // namespace

Place Place::of(std::string_view path) {
    const auto refuse = [path](const char *why) { return Failure(Status::WrongPlace, std::string(path), why); };
    if (!path.starts_with('/')) {
        throw refuse("is no absolute path");
    }
    if (path.find('\0') != std::string_view::npos) {
        throw refuse("holds a zero byte");
    }
    for (size_t begin = 1; begin <= path.size();) {
        const size_t end = std::min(path.find('/', begin), path.size());
        const std::string_view component = path.substr(begin, end - begin);
        if (component.empty() || component == "." || component == "..") {
            throw refuse("is not a plain path");
        }
        begin = end + 1;
    }
    const size_t slash = path.rfind('/');
    return {std::string(slash == 0 ? "/" : path.substr(0, slash)), std::string(path.substr(slash + 1))};
}

Folder Folder::open(const std::string &path) { return walk(path, false); }

Folder Folder::make(const std::string &path) { return walk(path, true); }

Folder Folder::walk(const std::string &path, bool makeMissing) {
    Descriptor folder(::open("/", kFolderFlags));
    for (size_t begin = 1; begin < path.size();) {
        const size_t end = std::min(path.find('/', begin), path.size());
        const std::string name = path.substr(begin, end - begin);
        Descriptor next = openFolder(folder.get(), name);
        if (!next.isOpen() && errno == ENOENT && makeMissing) {
            constexpr mode_t kMode = 0755;
            must(::mkdirat(folder.get(), name.c_str(), kMode) == 0 || errno == EEXIST, path.substr(0, end));
            next = openFolder(folder.get(), name);
        }
        if (!next.isOpen()) {
            const bool isMissing = errno == ENOENT;
            throw isMissing ? systemFailure(Status::WrongPlace, path.substr(0, end))
                            : Failure(Status::UnsafePlace, path.substr(0, end), "is a link or no folder");
        }
        folder = std::move(next);
        begin = end + 1;
    }
    return {std::move(folder), path};
}

void Folder::secure() const {
    constexpr mode_t kMode = 0755;
    must(::fchown(get(), 0, 0) == 0 && ::fchmod(get(), kMode) == 0, m_path);
}

Staging::Staging(const Folder &beside) : m_folder(beside.get()), m_folderPath(beside.path()) {
    clearLeftOvers(m_folder);
    constexpr int kAttempts = 20;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        m_name = newStagingName();
        must(::mkdirat(m_folder, m_name.c_str(), S_IRWXU) == 0, m_folderPath);
        m_descriptor = openFolder(m_folder, m_name);
        if (m_descriptor.isOpen() && ::flock(get(), LOCK_EX | LOCK_NB) == 0 && isOwn()) {
            return;
        }
        // Another process took it for a left-over before it was locked; or, where others can write, somebody
        // interferes.
    }
    throw Failure(Status::UnsafePlace, m_folderPath, "somebody interferes");
}

/// An empty folder of the administrator's that is still there.
bool Staging::isOwn() const {
    struct stat status {};
    return ::fstat(get(), &status) == 0 && status.st_uid == 0 && status.st_nlink > 0 && ::fchmod(get(), S_IRWXU) == 0 &&
           entriesOf(get()).empty();
}

Staging::~Staging() {
    for (const std::string &name : entriesOf(get())) {
        removeTree(get(), name);
    }
    ::unlinkat(m_folder, m_name.c_str(), AT_REMOVEDIR);
}

void Staging::install(const std::string &entry, const std::string &name) const {
    const std::string what = m_folderPath + '/' + name;
    bool isDone = ::renameat2(get(), entry.c_str(), m_folder, name.c_str(), RENAME_NOREPLACE) == 0;
    if (!isDone && errno == EEXIST) {
        // The old one lands here, and goes with this folder.
        isDone = ::renameat2(get(), entry.c_str(), m_folder, name.c_str(), RENAME_EXCHANGE) == 0;
    }
    must(isDone, what);
    must(::fsync(m_folder) == 0, what);
}

void settle(int folder, const std::string &name, Programs programs, bool isProgramFolder) {
    constexpr mode_t kProgram = 0755;
    constexpr mode_t kFile = 0644;
    struct stat status {};
    must(::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0, name);
    if (S_ISLNK(status.st_mode)) {
        must(::fchownat(folder, name.c_str(), 0, 0, AT_SYMLINK_NOFOLLOW) == 0, name);
        return;
    }
    const Descriptor file(::openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    must(file.isOpen(), name);
    if (S_ISDIR(status.st_mode)) {
        for (const std::string &entry : entriesOf(file.get())) {
            settle(file.get(), entry, programs, name == "MacOS");
        }
    }
    const bool isProgram = programs == Programs::ByTheirMode ? (status.st_mode & S_IXUSR) != 0 : isProgramFolder;
    const mode_t mode = S_ISDIR(status.st_mode) || isProgram ? kProgram : kFile;
    must(::fchown(file.get(), 0, 0) == 0 && ::fchmod(file.get(), mode) == 0 && ::fsync(file.get()) == 0, name);
}

void removeTree(int folder, const std::string &name) {
    if (const Descriptor inner = openFolder(folder, name); inner.isOpen()) {
        for (const std::string &entry : entriesOf(inner.get())) {
            removeTree(inner.get(), entry);
        }
    }
    if (::unlinkat(folder, name.c_str(), 0) != 0) {
        ::unlinkat(folder, name.c_str(), AT_REMOVEDIR);
    }
}

} // namespace updateqm
