#pragma once

#include "utils/Error.h"

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>

namespace quillmark {

struct FileAttributes {
    std::string ownerAccountName;   ///< empty for a number that no account has
    std::uint32_t posixPermissions; ///< the lowest twelve bits
};

/// An error of the system's, in kPosixErrorDomain. \param failureReason what went wrong, for people.
Error posixError(int error, const std::string &failureReason);

/// Files by their paths. Made once a thread and not to be shared.
class FileManager {
public:
    FileManager() = default;
    FileManager(const FileManager &) = delete;
    FileManager &operator=(const FileManager &) = delete;
    ~FileManager() = default;

    /// True when there is something at the path; links are followed.
    bool fileExists(const std::string &path) const;

    /// True when this process may write to what is at the path; links are followed.
    bool isWritable(const std::string &path) const;

    /// True when what is at the path, or leads away from there as a link, is the folder or lies in it at any depth. The
    /// folder itself is not followed when it is a link.
    bool isWithin(const std::string &path, const std::string &folder) const;

    /// Of what is at the path, be it a link; nothing when there is nothing or it can't be told.
    std::optional<FileAttributes> attributes(const std::string &path) const;

    /// True for a regular file of the administrator's or of this user's, no link, of that many bytes at the most.
    bool isTrustedFile(const std::string &path, std::int64_t largest) const;

    /// The topmost folder above the path in which somebody else than the administrator and this user can put another
    /// thing in the place of what leads to it, be it the folder's owner or whoever may write there; a link on the way
    /// counts, too. Nothing when there is none.
    std::optional<std::string> folderOfOthers(const std::string &path) const;

    /// Copies a file, a link or a folder with all that is in it to a place where there is nothing yet: contents, modes,
    /// times, extended attributes, links as links. \returns an error of kPosixErrorDomain that names the file at fault;
    /// then there is nothing new at the target.
    std::optional<Error> copyItem(const std::string &source, const std::string &target) const;

    /// Deletes a file, or a folder with all that is in it; a link itself, and not what it leads to. What can't be
    /// deleted stays. \returns 0 or an errno.
    int removeItem(const std::string &path) const;

    /// Creates a folder with all folders above it; the mode applies to each, less the user's mask. One that is there
    /// already is fine.
    /// \returns 0, or the errno of the folder that could not be created.
    int createFolder(const std::string &path, mode_t mode) const;
};

/// The calling thread's file manager, made at the thread's first call and gone with the thread.
FileManager &__QMCurrentThreadFileManager();

} // namespace quillmark
