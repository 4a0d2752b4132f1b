#pragma once

#include "platform/process/Descriptor.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <vector>

namespace quillmark {

/// All names in a folder, as the kernel hands them out: in no order, read before the first one is looked at.
class FolderEntries {
public:
    explicit FolderEntries(const std::string &path) {
        const Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder.isOpen()) {
            read(folder.get());
        } else {
            m_error = errno;
        }
    }
    /// Reads from where the descriptor stands, to the end.
    explicit FolderEntries(int folder) { read(folder); }

    /// 0, or the `errno` of what failed; then there may be entries missing.
    int error() const { return m_error; }

    /// Calls `visit(name, type)` for each entry but "." and "..", until it answers false. \returns its last answer.
    template <typename Visit>
    bool all(const Visit &visit) const {
        size_t at = 0;
        while (at < m_records.size()) {
            const auto *entry = reinterpret_cast<const dirent64 *>(&m_records[at]); // NOLINT: the kernel's form
            at += entry->d_reclen;
            const char *name = entry->d_name;
            if (std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0 && !visit(name, entry->d_type)) {
                return false;
            }
        }
        return true;
    }

private:
    void read(int folder) {
        std::array<char, 32768> part; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by the kernel
        ssize_t size = 0;
        while ((size = ::getdents64(folder, part.data(), part.size())) > 0) {
            m_records.insert(m_records.end(), part.data(), part.data() + size);
        }
        m_error = size < 0 ? errno : 0;
    }

    std::vector<char> m_records;
    int m_error = 0;
};

} // namespace quillmark
