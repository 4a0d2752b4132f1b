#pragma once

#include "files/Folder.h"

#include <string>
#include <string_view>
#include <vector>

namespace updateqm {

/// A folder beside the place of an installation into which nobody else can look. What becomes of it is settled by one
/// rename; whatever is left in it goes with it, also after this process was killed: the next one clears it.
class Staging {
public:
    explicit Staging(const Folder &beside);
    Staging(const Staging &) = delete;
    Staging &operator=(const Staging &) = delete;
    ~Staging();

    /// Paths are relative, each of their components plain, and what they name is new; the folders above it are there.
    void makeFolder(const std::string &path);
    void makeLink(const std::string &path, const std::string &target);
    /// \returns the file, open for writing.
    Descriptor makeFile(const std::string &path, unsigned mode);

    /// Puts one of its entries in the place, in whatever's place there was, when all of it is on the disk. Before and
    /// after there is a whole thing there. What was replaced can't be run with the administrator's rights any more.
    void install(const std::string &entry, const std::string &name);

    int get() const { return m_descriptor.get(); }

private:
    bool isUsable() const;
    Descriptor folderOf(const std::string &path) const;
    void writeToDisk();

    int m_folder;
    std::string m_folderPath;
    std::string m_name;
    Descriptor m_descriptor;
    std::vector<std::string> m_made; // folders and files that are not known to be on the disk
};

/// Writes all of the bytes. \param what is for the message of the Failure.
void writeAll(int file, std::string_view bytes, const std::string &what);

} // namespace updateqm
