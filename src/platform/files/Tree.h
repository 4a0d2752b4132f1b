#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

namespace quillmark {

// Files, links and folders with all that is in them, by their paths. Links are never followed, but those on the way to
// the item itself.

/// What stopped a copy: the file at fault, of the source or of the target, and an `errno`.
struct CopyFailure {
    std::string path;
    int error;
};

/// Copies an item to a place where there is nothing yet: contents with their holes, links (hard ones inside the item,
/// too), pipes, sockets and devices as such, modes, times, and owners and extended attributes as far as the user may
/// and the target's file system can; nobody else's file becomes a set-id one. \returns what stopped it: then there is
/// nothing new at the target.
std::optional<CopyFailure> copyTree(const std::string &source, const std::string &target);

/// True when nothing keeps the user from emptying the folders of an item. Whether the item itself may be taken out of
/// its folder only the attempt tells.
bool isTreeRemovable(const std::string &path);

/// Removes an item. What can't be removed stays. \returns 0 or an `errno`.
int removeTree(const std::string &path);
/// The same with those of the user's own folders that forbid it.
int removeUnlockedTree(const std::string &path);

/// Makes a folder with all folders above it; the mode applies to each, less the user's mask. One that is there already
/// is fine. \returns 0, or the `errno` of the one that could not be made.
int makeFolders(const std::string &path, mode_t mode = 0777);

} // namespace quillmark
