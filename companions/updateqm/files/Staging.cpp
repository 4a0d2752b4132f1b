#include "files/Staging.h"

#include "files/Removal.h"
#include "process/Failure.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace updateqm {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr mode_t kFolderMode = 0755;
constexpr const char *kPrefix = ".quillmark-";

Descriptor openFolder(int folder, const std::string &name) {
    return Descriptor(::openat(folder, name.c_str(), kFolderFlags));
}

bool isOwn(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && status.st_uid == ::geteuid();
}

std::string lastOf(const std::string &path) { return path.substr(path.rfind('/') + 1); }

/// Removes what a killed process has left. One that is in use is locked.
void clearLeftOvers(const Folder &folder) {
    for (const std::string &name : entriesOf(folder.get(), folder.path())) {
        if (!name.starts_with(kPrefix)) {
            continue;
        }
        const Descriptor leftOver = openFolder(folder.get(), name);
        if (leftOver.isOpen() && isOwn(leftOver.get()) && ::flock(leftOver.get(), LOCK_EX | LOCK_NB) == 0) {
            removeContents(leftOver.get());
            ::unlinkat(folder.get(), name.c_str(), AT_REMOVEDIR);
        }
    }
}

} // namespace

Staging::Staging(const Folder &beside) : m_folder(beside.get()), m_folderPath(beside.path()) {
    clearLeftOvers(beside);
    constexpr int kAttempts = 20;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        m_name = newName(kPrefix);
        must(::mkdirat(m_folder, m_name.c_str(), S_IRWXU) == 0, m_folderPath);
        m_descriptor = openFolder(m_folder, m_name);
        if (m_descriptor.isOpen() && ::flock(m_descriptor.get(), LOCK_EX | LOCK_NB) == 0 && isUsable()) {
            return;
        }
        // Another process of the same user took it for a left-over before it was locked.
    }
    throw Failure(Status::UnsafePlace, m_folderPath, "somebody interferes");
}

/// Whether it is still there, and is this user's and empty, so that it can become nobody else's.
bool Staging::isUsable() const {
    const int folder = m_descriptor.get();
    struct stat status {};
    dropAccessLists(folder, m_folderPath);
    return ::fstat(folder, &status) == 0 && status.st_nlink > 0 && isOwn(folder) && ::fchmod(folder, S_IRWXU) == 0 &&
           entriesOf(folder, m_folderPath).empty();
}

Staging::~Staging() {
    removeContents(m_descriptor.get());
    ::unlinkat(m_folder, m_name.c_str(), AT_REMOVEDIR);
}

/// The folder in which the path's last component lies.
Descriptor Staging::folderOf(const std::string &path) const {
    Descriptor folder(::dup(m_descriptor.get()));
    for (size_t begin = 0, end = path.find('/'); end != std::string::npos; end = path.find('/', begin)) {
        folder = openFolder(folder.get(), path.substr(begin, end - begin));
        must(folder.isOpen(), path);
        begin = end + 1;
    }
    return folder;
}

void Staging::makeFolder(const std::string &path) {
    must(::mkdirat(folderOf(path).get(), lastOf(path).c_str(), kFolderMode) == 0, path);
    m_made.push_back(path);
}

void Staging::makeLink(const std::string &path, const std::string &target) {
    must(::symlinkat(target.c_str(), folderOf(path).get(), lastOf(path).c_str()) == 0, path);
}

Descriptor Staging::makeFile(const std::string &path, unsigned mode) {
    Descriptor file(::openat(folderOf(path).get(), lastOf(path).c_str(),
                             O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    must(file.isOpen() && ::fchmod(file.get(), mode) == 0, path);
    m_made.push_back(path);
    return file;
}

void Staging::writeToDisk() {
    for (const std::string &path : m_made) {
        const Descriptor made(::openat(folderOf(path).get(), lastOf(path).c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        must(made.isOpen() && ::fsync(made.get()) == 0, path);
    }
    m_made.clear();
}

void Staging::install(const std::string &entry, const std::string &name) {
    const std::string what = m_folderPath + '/' + name;
    writeToDisk();
    bool isDone = ::renameat2(m_descriptor.get(), entry.c_str(), m_folder, name.c_str(), RENAME_NOREPLACE) == 0;
    if (!isDone && errno == EEXIST) {
        // The old one lands here, and goes with this folder.
        isDone = ::renameat2(m_descriptor.get(), entry.c_str(), m_folder, name.c_str(), RENAME_EXCHANGE) == 0;
    }
    must(isDone, what);
    must(::fsync(m_folder) == 0, what);
}

void writeAll(int file, std::string_view bytes, const std::string &what) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        must(count > 0, what);
        bytes.remove_prefix(static_cast<size_t>(count));
    }
}

} // namespace updateqm
