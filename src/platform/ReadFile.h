#pragma once

#include <QByteArray>
#include <QString>
#include <variant>

namespace quillmark {

/// Why a file was not read: an `errno` value.
struct ReadError {
    int error;
};

/// Reads a whole regular file of at most `maximumSize` bytes; EFBIG when it is larger, EINVAL when it is no regular
/// file. Never waits for a writer, as opening a named pipe would.
std::variant<QByteArray, ReadError> readRegularFile(const QString &path, qint64 maximumSize);
/// The same below an open folder; `folder` may be AT_FDCWD.
std::variant<QByteArray, ReadError> readRegularFileAt(int folder, const char *path, qint64 maximumSize);

} // namespace quillmark
