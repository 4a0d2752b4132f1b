#pragma once

#include <string>
#include <sys/types.h>

namespace quillmark {

// Files, links and folders with all that is in them, by their paths. Links are never followed, but those on the way to
// the item itself.

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
