#pragma once

#include <optional>
#include <string>

namespace quillmark {

/// The Downloads folder that the desktop goes by: XDG_DOWNLOAD_DIR in its list of the user's folders, user-dirs.dirs
/// (freedesktop.org, xdg-user-dirs). Absent when the list has none.
std::optional<std::string> downloadsFolderOfDesktop();

} // namespace quillmark
