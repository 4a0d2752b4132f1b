#pragma once

#include <optional>
#include <string>

namespace quillmark {

/// Makes sure that there is something at the path: a missing folder is created with all folders above it, with mode
/// 0777 less the user's mask. Raises a generic exception that names the path when that fails.
void ensureFolderPathExists(const std::optional<std::string> &folderPath);

} // namespace quillmark
