#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace quillmark {

/// Why a file was not read: an `errno` value.
struct ReadError {
    int error;
};

/// Reads a whole regular file of at most `maximumSize` bytes; EFBIG when it is larger, EINVAL when it is not a regular
/// file. Never waits for a writer, as opening a named pipe would.
std::variant<std::string, ReadError> readRegularFile(const std::string &path, std::int64_t maximumSize);
/// The same below an open folder; `folder` may be AT_FDCWD.
std::variant<std::string, ReadError> readRegularFileAt(int folder, const char *path, std::int64_t maximumSize);

} // namespace quillmark
