#pragma once

#include <QString>

namespace quillmark {

/// The user's home folder: HOME, or what the account database says when HOME is not an absolute path.
QString homeFolder();

/// The path with a leading "~" or "~/" replaced by the home folder; any other path as it is.
QString expandingTilde(const QString &path);

} // namespace quillmark
