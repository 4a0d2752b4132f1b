#pragma once

#include <string>
#include <string_view>

namespace quillmark {

/// The user's home folder: HOME, or what the account database says when HOME is not an absolute path.
std::string homeFolder();

/// The folder that an environment variable of the desktops names by an absolute path, else the usual one in the home
/// folder.
std::string folderOfDesktop(const char *variable, const char *usual);

/// The path with a leading "~" or "~/" replaced by the home folder; any other path as it is.
std::string expandingTilde(std::string_view path);

} // namespace quillmark
