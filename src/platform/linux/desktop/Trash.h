#pragma once

#include <string>

namespace quillmark {

/// Moves the item of that name in that folder to the user's Trash, as the desktops have agreed on it: into the one of
/// the home folder, or that of the item's own file system; where that has none, as a copy into the first.
/// \returns false when the item stays where it is; then nothing of it is in a Trash.
bool moveToTrash(const std::string &name, const std::string &folder);

} // namespace quillmark
