#include "platform/BundleSearch.h"

#include "platform/PropertyList.h"
#include "platform/ReadFile.h"

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <strings.h>
#include <vector>

namespace quillmark {

namespace {

constexpr size_t kSuffixLength = 4; // ".app"

struct Entry {
    std::string name;
    bool mayBeFolder; ///< false for what is surely something else
};

/// The folder's entries by name; none when it can't be read.
std::vector<Entry> entriesOf(const std::string &folder) {
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(::opendir(folder.c_str()), ::closedir);
    std::vector<Entry> entries;
    while (directory != nullptr) {
        const struct dirent *entry = ::readdir(directory.get()); // NOLINT(concurrency-mt-unsafe): a stream of our own
        if (entry == nullptr) {
            break;
        }
        const std::string name(entry->d_name);
        if (name != "." && name != "..") {
            const bool mayBeFolder = entry->d_type == DT_DIR || entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN;
            entries.push_back({name, mayBeFolder});
        }
    }
    std::sort(entries.begin(), entries.end(), [](const Entry &a, const Entry &b) { return a.name < b.name; });
    return entries;
}

/// True when the first ".app" in the name, in any letter case, is also its end. So "a.app.old" and "x.app.app" are no
/// bundles, which is deliberate.
bool isBundleName(const std::string &name) {
    const auto suffixAt = [&name](size_t at) { return ::strncasecmp(name.c_str() + at, ".app", kSuffixLength) == 0; };
    for (size_t at = name.find('.'); at != std::string::npos; at = name.find('.', at + 1)) {
        if (suffixAt(at)) {
            return at + kSuffixLength == name.size();
        }
    }
    return false;
}

class BundleSearch {
public:
    BundleSearch(std::string identifier, std::optional<std::vector<std::string>> *foundPaths,
                 const PropertyList &propertyList)
        : m_identifier(std::move(identifier)), m_foundPaths(foundPaths), m_propertyList(propertyList) {}

    /// Neither depth nor cycles of links are looked after: the system's own limit on links in a path ends them.
    void walk(const std::string &folder) {
        for (const Entry &entry : entriesOf(folder)) {
            const std::string path = folder.ends_with('/') ? folder + entry.name : folder + '/' + entry.name;
            if (isBundleName(entry.name)) {
                examine(path);
            } else if (entry.mayBeFolder) {
                walk(path);
            }
        }
    }

private:
    void examine(const std::string &bundle) {
        auto contents = readRegularFile(bundle + "/Contents/Info.plist", PropertyList::kMaximumMemory);
        auto *document = std::get_if<std::string>(&contents);
        if (document == nullptr || m_foundPaths == nullptr) {
            return;
        }
        const Value information = m_propertyList.parse(std::move(*document));
        if (valueOf(information.dictionary(), "CFBundleIdentifier") == m_identifier) {
            if (!m_foundPaths->has_value()) {
                m_foundPaths->emplace();
            }
            (*m_foundPaths)->push_back(bundle);
        }
    }

    const std::string m_identifier;
    std::optional<std::vector<std::string>> *m_foundPaths;
    const PropertyList &m_propertyList;
};

} // namespace

void pathsForIdent(const std::string &identifier, const std::string &fromPath,
                   std::optional<std::vector<std::string>> *foundPaths, const PropertyList &propertyList) {
    BundleSearch(identifier, foundPaths, propertyList).walk(fromPath);
}

} // namespace quillmark
