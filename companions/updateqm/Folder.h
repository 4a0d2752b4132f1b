#pragma once

#include "platform/Descriptor.h"

#include <string>
#include <string_view>

namespace updateqm {

using quillmark::Descriptor;

/// The two parts of an absolute path. Raises a Failure for one that is not absolute, ends in a slash, or has a
/// component that is empty, "." or "..".
struct Place {
    std::string folder; ///< "/" for what lies at the top
    std::string name;

    static Place of(std::string_view path);
};

/// An open folder, found without following a link.
class Folder {
public:
    /// Raises a Failure when a component is missing, a link or no folder.
    static Folder open(const std::string &path);
    /// Makes missing components, the administrator's, with mode 0755.
    static Folder make(const std::string &path);

    /// Sees to it that only the administrator can write to it.
    void secure() const;

    int get() const { return m_descriptor.get(); }
    const std::string &path() const { return m_path; }

private:
    Folder(Descriptor descriptor, std::string path) : m_descriptor(std::move(descriptor)), m_path(std::move(path)) {}
    static Folder walk(const std::string &path, bool makeMissing);

    Descriptor m_descriptor;
    std::string m_path;
};

/// A folder beside the place of an installation into which only the administrator can look. What becomes of it is
/// settled by one rename; whatever is left in it goes with it, also after this process was killed: the next one clears
/// it.
class Staging {
public:
    explicit Staging(const Folder &beside);
    Staging(const Staging &) = delete;
    Staging &operator=(const Staging &) = delete;
    ~Staging();

    int get() const { return m_descriptor.get(); }
    /// A path to it that no other process can bend: by way of the open descriptor.
    std::string path() const { return "/proc/self/fd/" + std::to_string(get()); }

    /// Puts one of its entries in the place, in whatever's place there was. Before and after there is a whole thing
    /// there.
    void install(const std::string &entry, const std::string &name) const;

private:
    bool isOwn() const;

    int m_folder;
    std::string m_folderPath;
    std::string m_name;
    Descriptor m_descriptor;
};

/// How the programs among a bundle's files are known.
enum class Programs { ByTheirMode, ByTheirFolder };

/// Writes what there is to the disk, folders with their contents, as the administrator's: folders and programs with
/// mode 0755, other files with 0644.
void settle(int folder, const std::string &name, Programs programs, bool isProgramFolder = false);

/// Removes what there is, folders with their contents. Links are removed and not followed.
void removeTree(int folder, const std::string &name);

} // namespace updateqm
