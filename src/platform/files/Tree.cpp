#include "platform/files/Tree.h"

#include "platform/files/FolderEntries.h"
#include "platform/files/Path.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {

namespace {

/// Shows `visit` each folder of a tree before its contents, open, until it answers false. \returns its last answer;
/// false when one can't be read.
template <typename Visit>
bool eachFolder(int folder, const char *name, const Visit &visit) {
    const Descriptor opened(::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!opened.isOpen()) {
        return errno == ENOTDIR || errno == ELOOP; // a link, or what has no entries
    }
    if (::fstat(opened.get(), &status) != 0 || !visit(opened.get(), status)) {
        return false;
    }
    const FolderEntries entries(opened.get());
    return entries.error() == 0 && entries.all([&](const char *entry, unsigned char type) {
        return (type != DT_DIR && type != DT_UNKNOWN) || eachFolder(opened.get(), entry, visit);
    });
}

} // namespace

bool isTreeRemovable(const std::string &path) {
    const uid_t user = ::geteuid();
    return eachFolder(AT_FDCWD, path.c_str(), [user](int folder, const struct stat &status) {
        if (user == 0 || status.st_uid == user) {
            return true;
        }
        // In a folder with the sticky bit each may remove only what is theirs.
        return (status.st_mode & S_ISVTX) == 0 && ::faccessat(folder, ".", W_OK | X_OK, AT_EACCESS) == 0;
    });
}

int removeTree(const std::string &path) {
    std::error_code error;
    std::filesystem::remove_all(path.c_str(), error);
    return error.value();
}

int removeUnlockedTree(const std::string &path) {
    eachFolder(AT_FDCWD, path.c_str(), [](int folder, const struct stat &status) {
        if ((status.st_mode & S_IRWXU) != S_IRWXU) {
            ::fchmod(folder, status.st_mode | S_IRWXU);
        }
        return true;
    });
    return removeTree(path);
}

int makeFolders(const std::string &path, mode_t mode) {
    const std::string folder = withoutEndingSlashes(path);
    const auto exists = [&folder] { return ::access(folder.c_str(), F_OK) == 0; };
    if (exists()) {
        return 0;
    }
    if (const std::string above = deletingLastPathComponent(folder); !above.empty()) {
        if (const int error = makeFolders(above, mode); error != 0) {
            return error;
        }
    }
    // Somebody else may have made it meanwhile.
    return ::mkdir(folder.c_str(), mode) == 0 || (errno == EEXIST && exists()) ? 0 : errno;
}

} // namespace quillmark
