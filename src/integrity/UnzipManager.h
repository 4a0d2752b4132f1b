#pragma once

#include "platform/process/Descriptor.h"

#include <string>
#include <string_view>

namespace quillmark {

/// Unpacks a ZIP archive into the folder that holds it. The format is minizip's business; statuses are minizip's: 0 is
/// fine, all others are not. Nothing is logged.
///
/// Nothing outside the archive's folder is touched, whatever the entries' names are and whatever stands in the folder
/// already: an entry is refused, as a failed one, when its name is absolute, begins with a drive letter or has a
/// component "..", or when a component, the last one included, is a symbolic link. Files are made with the permissions
/// 0666 and folders with 0775, less the process's mask; an entry that is a symbolic link becomes a file.
class UnzipManager {
public:
    /// Opens the archive. A path that can't be opened shows in extractAll().
    explicit UnzipManager(const std::string &path);
    UnzipManager(const UnzipManager &) = delete;
    UnzipManager &operator=(const UnzipManager &) = delete;
    /// Deliberately leaves the archive itself open; only its current entry is closed.
    ~UnzipManager();

    /// Unpacks entry after entry, in the archive's order, until one fails. Existing files are overwritten.
    /// \returns what reading the number of entries gave, minizip's parameter error without an archive, else 0: also
    /// when an entry failed, deliberately.
    int extractAll();

protected:
    /// \returns the current entry's status; it is 0, deliberately, when the entry's file could not be made.
    int extractCurrentFile();
    /// Creates a folder with all above it. All paths here are relative to the archive's folder.
    /// \returns 1, or 0 when that can't be.
    int makedir(const char *path);
    /// Creates one folder. \returns 0, or -1 with errno.
    int mymkdir(const char *path);

    // Not private, so that tests can look at the archive's state and close it.
    // NOLINTBEGIN(misc-non-private-member-variables-in-classes)
    /// minizip's handle; null when the archive could not be opened.
    void *uf = nullptr;
    /// The archive's folder with a slash behind it.
    std::string outputPath;
    // NOLINTEND(misc-non-private-member-variables-in-classes)

private:
    /// Makes the folder that holds what the path names the current parent. \returns false with errno, which is ELOOP
    /// when the way leads through a symbolic link.
    bool findParent(std::string_view path);
    int parent() const { return m_parent.isOpen() ? m_parent.get() : m_folder.get(); }
    /// True when the path, which could not be created, leads through a symbolic link or is one.
    bool leadsThroughLink(std::string_view path);
    /// Not open when that fails, with errno, which is ELOOP when the path leads through a symbolic link or is one.
    Descriptor createFile(std::string_view path);
    int writeCurrentFile(int file, char *buffer);

    Descriptor m_folder;
    /// The parent of the entry before, since entries of one folder mostly stand together; not open for m_folder itself.
    Descriptor m_parent;
    std::string m_parentPath;
};

} // namespace quillmark
