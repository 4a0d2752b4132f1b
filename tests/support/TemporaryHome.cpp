#include "support/TemporaryHome.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace quillmark::test {

TemporaryHome::TemporaryHome(const std::string &place)
    : m_folder((place.empty() ? std::filesystem::temp_directory_path() : std::filesystem::path(place)) /
               "quillmark-XXXXXX") {
    if (::mkdtemp(m_folder.data()) == nullptr) {
        std::abort();
    }
    if (const char *home = std::getenv("HOME")) {
        m_previousHome = home;
    }
    ::setenv("HOME", m_folder.c_str(), 1);
}

TemporaryHome::~TemporaryHome() {
    std::error_code obstacle;
    std::filesystem::remove_all(m_folder, obstacle);
    ::setenv("HOME", m_previousHome.c_str(), 1);
}

std::string TemporaryHome::write(const std::string &relative, const std::string &contents) const {
    const std::filesystem::path file = path(relative);
    std::filesystem::create_directories(file.parent_path());
    EXPECT_TRUE(std::ofstream(file) << contents << std::flush) << file;
    return file;
}

std::string TemporaryHome::link(const std::string &relative, const std::string &target) const {
    std::filesystem::create_symlink(target, path(relative));
    return path(relative);
}

std::string TemporaryHome::makeFolder(const std::string &relative) const {
    std::filesystem::create_directories(path(relative));
    return path(relative);
}

std::string readAll(const std::string &path) {
    std::ifstream file(path);
    return file ? std::string(std::istreambuf_iterator(file), {}) : "(unreadable)";
}

} // namespace quillmark::test
