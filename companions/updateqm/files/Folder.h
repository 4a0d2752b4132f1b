#pragma once

#include "platform/process/Descriptor.h"

#include <string>
#include <vector>

namespace updateqm {

using quillmark::Descriptor;

/// An open folder, found without following a link.
class Folder {
public:
    /// Raises a Failure when a component is missing, a link or no folder.
    static Folder open(const std::string &path);
    /// The same, for one that nobody but the administrator can change, move away or exchange: it and each folder above
    /// it are the administrator's, and nobody else can write there. Raises a Failure that names the first that is not
    /// so.
    static Folder openAdministrators(const std::string &path);
    /// Makes missing components, the administrator's, with mode 0755.
    static Folder makeAdministrators(const std::string &path);

    /// A folder in this one. Raises a Failure when it is missing, a link or no folder.
    Folder inner(const std::string &name) const;
    /// The folder of the product's own in this one, which is the administrator's from now on. It is made when it is
    /// missing. Nobody gets a right that he had not before. What a former owner may have moved here stays, but no
    /// folder keeps its name: none of them is taken for one of the product's and replaced.
    Folder takeInner(const std::string &name) const;

    bool isAdministratorsAlone() const;

    int get() const { return m_descriptor.get(); }
    const std::string &path() const { return m_path; }

private:
    Folder(Descriptor descriptor, std::string path) : m_descriptor(std::move(descriptor)), m_path(std::move(path)) {}
    template <class Check>
    static Folder walk(const std::string &path, bool makeMissing, const Check &check);
    void setFoldersAside() const;

    Descriptor m_descriptor;
    std::string m_path;
};

/// The names in a folder, without the two that every folder has. Raises a Failure when it can't be read.
std::vector<std::string> entriesOf(int folder, const std::string &what);

/// Takes away what lists of further users say on top of the mode, for it and for what will be made in it.
void dropAccessLists(int folder, const std::string &what);

/// A name that begins like this and that nothing has yet.
std::string newName(const std::string &prefix);

} // namespace updateqm
