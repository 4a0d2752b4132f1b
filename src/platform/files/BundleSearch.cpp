#include "platform/files/BundleSearch.h"

#include "platform/PropertyList.h"
#include "platform/files/FolderEntries.h"

#include <algorithm>
#include <cstring>

namespace quillmark {

namespace {

struct Entry {
    std::string name;
    bool mayBeFolder; ///< false for what is surely something else
};

/// The folder's entries by name; none when it can't be read.
std::vector<Entry> entriesOf(const std::string &folder) {
    std::vector<Entry> entries;
    FolderEntries(folder).all([&entries](const char *name, unsigned char type) {
        entries.push_back({name, type == DT_DIR || type == DT_LNK || type == DT_UNKNOWN});
        return true;
    });
    std::sort(entries.begin(), entries.end(), [](const Entry &a, const Entry &b) { return a.name < b.name; });
    return entries;
}

/// True when the first ".app" in the name, in any letter case, is also its end. So "a.app.old" and "x.app.app" are no
/// bundles, which is deliberate.
bool isBundleName(const std::string &name) {
    constexpr std::string_view kSuffix = ".app";
    const char *const suffix = ::strcasestr(name.c_str(), kSuffix.data());
    return suffix != nullptr && suffix[kSuffix.size()] == '\0';
}

} // namespace

/// Neither depth nor cycles of links are looked after: the system's own limit on links in a path ends them.
void pathsForIdent(const std::string &identifier, const std::string &fromPath,
                   std::optional<std::vector<std::string>> *foundPaths, const PropertyList &propertyList) {
    const auto isWanted = [&](const std::string &bundle) {
        const Value information = propertyList.read(bundle + "/Contents/Info.plist");
        return valueOf(information.dictionary(), "CFBundleIdentifier") == identifier;
    };
    for (const Entry &entry : entriesOf(fromPath)) {
        const std::string path = fromPath.ends_with('/') ? fromPath + entry.name : fromPath + '/' + entry.name;
        if (!isBundleName(entry.name)) {
            if (entry.mayBeFolder) {
                pathsForIdent(identifier, path, foundPaths, propertyList);
            }
        } else if (foundPaths != nullptr && isWanted(path)) {
            if (!foundPaths->has_value()) {
                foundPaths->emplace();
            }
            (*foundPaths)->push_back(path);
        }
    }
}

} // namespace quillmark
