#pragma once

#include <string>

namespace quillmark::test {

/// A folder of the test's own, which also is its home folder.
class TemporaryHome {
public:
    /// \param place an existing folder; the one for temporary files when it is empty.
    explicit TemporaryHome(const std::string &place = {});
    TemporaryHome(const TemporaryHome &) = delete;
    TemporaryHome &operator=(const TemporaryHome &) = delete;
    ~TemporaryHome();

    std::string path(const std::string &relative = {}) const {
        return relative.empty() ? m_folder : m_folder + '/' + relative;
    }
    /// Writes a file below the home folder, with the folders above it. \returns its path.
    std::string write(const std::string &relative, const std::string &contents) const;
    /// Makes a link that leads to the target, wherever that is. \returns its path.
    std::string link(const std::string &relative, const std::string &target) const;
    std::string makeFolder(const std::string &relative) const;

private:
    std::string m_folder;
    std::string m_previousHome;
};

/// A whole file's bytes.
std::string readAll(const std::string &path);

} // namespace quillmark::test
