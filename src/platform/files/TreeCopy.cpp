#include "platform/files/TreeCopy.h"

#include "platform/files/FolderEntries.h"
#include "platform/files/Path.h"
#include "platform/files/Tree.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <linux/limits.h>
#include <map>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace quillmark {

namespace {

constexpr mode_t kModeBits = 07777;
constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// As the folder that holds it tells.
unsigned char typeOf(const struct stat &status) { return static_cast<unsigned char>(IFTODT(status.st_mode)); }

/// As many bytes as the kernel copies at once. \returns their number; -1 with `errno` set.
ssize_t copySome(int source, int target, off_t at, off_t end) {
    off_t from = at;
    off_t to = at;
    const auto size = static_cast<size_t>(end - at);
    const ssize_t count = ::copy_file_range(source, &from, target, &to, size, 0); // shares the blocks where it can
    if (count >= 0 || errno == EINTR || errno == ENOSPC || errno == EIO) {
        return count;
    }
    // Between file systems, and on some that know nothing of it.
    return ::lseek(target, at, SEEK_SET) == at ? ::sendfile(target, source, &from, size) : -1;
}

bool copyRange(int source, int target, off_t at, off_t end) {
    while (at < end) {
        const ssize_t count = copySome(source, target, at, end);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        if (count == 0) { // shortened meanwhile
            return true;
        }
        at += count > 0 ? count : 0;
    }
    return true;
}

/// Copies what is written in a file; where nothing is, nothing will be in the copy.
bool copyContents(int source, int target, const struct stat &status) {
    constexpr off_t kBlock = 512; // the unit of st_blocks
    if (status.st_blocks >= status.st_size / kBlock) {
        return copyRange(source, target, 0, status.st_size);
    }
    for (off_t at = 0, end = 0; at < status.st_size; at = end) {
        at = ::lseek(source, at, SEEK_DATA);
        if (at < 0) {
            if (errno == ENXIO) { // nothing more
                break;
            }
            return false;
        }
        end = ::lseek(source, at, SEEK_HOLE);
        if (end < 0 || !copyRange(source, target, at, end)) {
            return false;
        }
    }
    return ::ftruncate(target, status.st_size) == 0;
}

class TreeCopy {
public:
    TreeCopy(std::string source, std::string target) : m_source(std::move(source)), m_target(std::move(target)) {}

    std::optional<CopyFailure> run() {
        struct stat status {};
        if (::lstat(m_source.c_str(), &status) != 0) {
            return CopyFailure{m_source, errno};
        }
        if (copyItem(typeOf(status), {AT_FDCWD, m_source.c_str()}, {AT_FDCWD, m_target.c_str()})) {
            return std::nullopt;
        }
        if (m_isBegun) {
            removeUnlockedTree(m_target);
        }
        return m_failure;
    }

private:
    /// A name in an open folder.
    struct Place {
        int folder;
        const char *name;
    };

    bool copyItem(unsigned char type, const Place &source, const Place &target) {
        if (type == DT_REG) {
            return copyFile(source, target);
        }
        return type == DT_DIR ? copyFolder(source, target) : copySpecial(source, target);
    }

    bool copyFile(const Place &source, const Place &target) {
        // What has stopped being a file must not hold this up.
        const Descriptor from(
            ::openat(source.folder, source.name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
        struct stat status {};
        if (!from.isOpen() || ::fstat(from.get(), &status) != 0) {
            return sourceFailed();
        }
        if (!S_ISREG(status.st_mode)) {
            return sourceFailed(EINVAL);
        }
        if (status.st_nlink > 1 && linksToCopy(status, target)) {
            return true;
        }
        const Descriptor to(::openat(target.folder, target.name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        return noteMaking(to.isOpen()) &&
               ((copyContents(from.get(), to.get(), status) && copyAttributes(from.get(), to.get(), status)) ||
                targetFailed());
    }

    /// Makes a link to the copy of a file that has been copied under another name. \returns false when there is none.
    bool linksToCopy(const struct stat &status, const Place &target) {
        const auto [first, isFirst] = m_linkedFiles.try_emplace({status.st_dev, status.st_ino}, m_path);
        return !isFirst && ::linkat(AT_FDCWD, (m_target + first->second).c_str(), target.folder, target.name, 0) == 0;
    }

    /// Until all is in it a copied folder is for its owner alone.
    bool copyFolder(const Place &source, const Place &target) {
        const Descriptor from(::openat(source.folder, source.name, kFolderFlags));
        struct stat status {};
        if (!from.isOpen() || ::fstat(from.get(), &status) != 0) {
            return sourceFailed();
        }
        if (m_top && status.st_dev == m_top->st_dev && status.st_ino == m_top->st_ino) { // into itself
            return targetFailed(EINVAL);
        }
        if (!noteMaking(::mkdirat(target.folder, target.name, S_IRWXU) == 0)) {
            return false;
        }
        const Descriptor to(::openat(target.folder, target.name, kFolderFlags));
        if (!to.isOpen() || (!m_top && ::fstat(to.get(), &m_top.emplace()) != 0)) {
            return targetFailed();
        }
        const FolderEntries entries(from.get());
        if (entries.error() != 0) {
            return sourceFailed(entries.error());
        }
        const auto copyEntry = [&](const char *name, unsigned char type) {
            const size_t size = m_path.size();
            m_path.append(1, '/').append(name);
            const bool isCopied = copyItem(type, {from.get(), name}, {to.get(), name});
            m_path.resize(size);
            return isCopied;
        };
        return entries.all(copyEntry) && (copyAttributes(from.get(), to.get(), status) || targetFailed());
    }

    /// Copies what is not opened for that: links, pipes, sockets and devices; and what the folder does not tell of.
    bool copySpecial(const Place &source, const Place &target) {
        struct stat status {};
        if (::fstatat(source.folder, source.name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
            return sourceFailed();
        }
        if (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) {
            return copyItem(typeOf(status), source, target);
        }
        if (S_ISLNK(status.st_mode)) {
            std::array<char, PATH_MAX> text{};
            const ssize_t size = ::readlinkat(source.folder, source.name, text.data(), text.size() - 1);
            if (size < 0) {
                return sourceFailed();
            }
            if (!noteMaking(::symlinkat(text.data(), target.folder, target.name) == 0)) {
                return false;
            }
        } else if (!noteMaking(::mknodat(target.folder, target.name, status.st_mode, status.st_rdev) == 0)) {
            return false;
        } else if (::fchmodat(target.folder, target.name, status.st_mode & kModeBits, 0) != 0) {
            return targetFailed();
        }
        if (isOthers(status)) { // it stays ours where it can't be given away
            [[maybe_unused]] const int result =
                ::fchownat(target.folder, target.name, status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW);
        }
        const std::array<timespec, 2> times{status.st_atim, status.st_mtim};
        return ::utimensat(target.folder, target.name, times.data(), AT_SYMLINK_NOFOLLOW) == 0 || targetFailed();
    }

    bool copyAttributes(int source, int target, const struct stat &status) {
        mode_t mode = status.st_mode & kModeBits;
        if (isOthers(status) && ::fchown(target, status.st_uid, status.st_gid) != 0) {
            mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
        }
        const std::array<timespec, 2> times{status.st_atim, status.st_mtim};
        return copyExtendedAttributes(source, target) && ::fchmod(target, mode) == 0 &&
               ::futimens(target, times.data()) == 0;
    }

    /// True when what is made here would not belong to the same user and group by itself.
    bool isOthers(const struct stat &status) const {
        return !m_top || status.st_uid != m_top->st_uid || status.st_gid != m_top->st_gid;
    }

    /// The user's own are copied wherever the file system keeps such; the system's as far as that is allowed.
    bool copyExtendedAttributes(int source, int target) {
        m_names.resize(XATTR_LIST_MAX);
        const ssize_t size = ::flistxattr(source, m_names.data(), m_names.size());
        if (size <= 0) {
            return size == 0 || errno == ENOTSUP;
        }
        m_value.resize(XATTR_SIZE_MAX);
        for (const char *name = m_names.data(); name < m_names.data() + size; name += std::strlen(name) + 1) {
            const ssize_t length = ::fgetxattr(source, name, m_value.data(), m_value.size());
            const bool isCopied =
                length >= 0 && ::fsetxattr(target, name, m_value.data(), static_cast<size_t>(length), 0) == 0;
            if (!isCopied && errno != ENOTSUP && std::string_view(name).starts_with("user.")) {
                return false;
            }
        }
        return true;
    }

    /// Takes down that there is something at the target now, or that it could not be made. \returns which.
    bool noteMaking(bool isMade) {
        m_isBegun = m_isBegun || isMade;
        return isMade || targetFailed();
    }
    bool sourceFailed(int error = errno) { return failed(m_source, error); }
    bool targetFailed(int error = errno) { return failed(m_target, error); }
    bool failed(const std::string &root, int error) {
        m_failure = {root + m_path, error};
        return false;
    }

    const std::string m_source;
    const std::string m_target;
    std::string m_path; ///< of what is being copied, below both
    CopyFailure m_failure{};
    bool m_isBegun = false;
    std::optional<struct stat> m_top;                             ///< of the copied folder, once there is one
    std::map<std::pair<dev_t, ino_t>, std::string> m_linkedFiles; ///< where each was copied to
    std::vector<char> m_names;
    std::vector<char> m_value;
};

} // namespace

std::optional<CopyFailure> copyTree(const std::string &source, const std::string &target) {
    return TreeCopy(withoutEndingSlashes(source), withoutEndingSlashes(target)).run();
}

} // namespace quillmark
