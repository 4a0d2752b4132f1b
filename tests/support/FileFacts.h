#pragma once

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
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

inline mode_t permissionsOf(const std::string &path) { return statusOf(path).st_mode & 07777U; }

/// The names of all that lies in a folder; none when there is no folder.
inline std::set<std::string> namesIn(const std::string &folder) {
    std::set<std::string> names;
    std::error_code missing;
    for (const auto &entry : std::filesystem::directory_iterator(folder, missing)) {
        names.insert(entry.path().filename());
    }
    return names;
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
