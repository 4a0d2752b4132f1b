#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <string>

namespace quillmark::test {

/// A folder of the test's own, which also is its home folder.
class TemporaryHome {
public:
    /// \param place an existing folder.
    explicit TemporaryHome(const std::filesystem::path &place = std::filesystem::temp_directory_path())
        : m_folder(place / "quillmark-XXXXXX") {
        if (::mkdtemp(m_folder.data()) == nullptr) {
            std::abort();
        }
        if (const char *home = std::getenv("HOME")) {
            m_previousHome = home;
        }
        ::setenv("HOME", m_folder.c_str(), 1);
    }
    TemporaryHome(const TemporaryHome &) = delete;
    TemporaryHome &operator=(const TemporaryHome &) = delete;
    ~TemporaryHome() {
        std::error_code obstacle;
        std::filesystem::remove_all(m_folder, obstacle);
        ::setenv("HOME", m_previousHome.c_str(), 1);
    }

    std::string path(const std::string &relative = {}) const {
        return relative.empty() ? m_folder : m_folder + '/' + relative;
    }
    /// Writes a file below the home folder, with the folders above it. \returns its path.
    std::string write(const std::string &relative, const std::string &contents) const {
        const std::filesystem::path file = path(relative);
        std::filesystem::create_directories(file.parent_path());
        EXPECT_TRUE(std::ofstream(file) << contents << std::flush) << file;
        return file;
    }
    /// Makes a link that leads to the target, wherever that is. \returns its path.
    std::string link(const std::string &relative, const std::string &target) const {
        std::filesystem::create_symlink(target, path(relative));
        return path(relative);
    }
    std::string makeFolder(const std::string &relative) const {
        std::filesystem::create_directories(path(relative));
        return path(relative);
    }

private:
    std::string m_folder;
    std::string m_previousHome;
};

/// A whole file's bytes.
inline std::string readAll(const std::string &path) {
    std::ifstream file(path);
    return file ? std::string(std::istreambuf_iterator(file), {}) : "(unreadable)";
}

} // namespace quillmark::test
