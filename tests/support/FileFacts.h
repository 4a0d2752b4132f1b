#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace quillmark::test {

/// What `lstat` tells of the path; the test fails when it tells nothing.
inline struct stat statusOf(const std::string &path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status;
}

inline bool setAttribute(const std::string &path, const char *name, std::string_view value) {
    return ::setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

inline std::string attribute(const std::string &path, const char *name) {
    std::string value(65536, '\0');
    const ssize_t size = ::getxattr(path.c_str(), name, value.data(), value.size());
    return size < 0 ? "(none)" : value.substr(0, static_cast<size_t>(size));
}

inline void setTimes(const std::string &path, timespec accessed, timespec modified) {
    const timespec times[] = {accessed, modified};
    EXPECT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

} // namespace quillmark::test
