#pragma once

#include "support/TemporaryHome.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace quillmark::test {

/// What `lstat` tells of the path; the test fails when it tells nothing.
inline struct stat statusOf(const QString &path) {
    struct stat status {};
    EXPECT_EQ(::lstat(QFile::encodeName(path).constData(), &status), 0) << path.toStdString();
    return status;
}

inline bool setAttribute(const QString &path, const char *name, const QByteArray &value) {
    return ::setxattr(QFile::encodeName(path).constData(), name, value.constData(), static_cast<size_t>(value.size()),
                      0) == 0;
}

inline QByteArray attribute(const QString &path, const char *name) {
    QByteArray value(65536, '\0');
    const ssize_t size = ::getxattr(QFile::encodeName(path).constData(), name, value.data(), 65536);
    return size < 0 ? QByteArray("(none)") : value.left(size);
}

inline void setTimes(const QString &path, timespec accessed, timespec modified) {
    const timespec times[] = {accessed, modified};
    EXPECT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, AT_SYMLINK_NOFOLLOW), 0);
}

} // namespace quillmark::test
