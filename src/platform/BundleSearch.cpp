#include "platform/BundleSearch.h"

#include "platform/PropertyList.h"
#include "platform/ReadFile.h"

#include <QFile>
#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <strings.h>
#include <vector>

namespace quillmark {

namespace {

constexpr qsizetype kSuffixLength = 4; // ".app"

struct Entry {
    QByteArray name;
    bool mayBeFolder; ///< false for what is surely something else
};

/// The folder's entries by name; none when it can't be read.
std::vector<Entry> entriesOf(const QByteArray &folder) {
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(::opendir(folder.constData()), ::closedir);
    std::vector<Entry> entries;
    while (directory != nullptr) {
        const struct dirent *entry = ::readdir(directory.get()); // NOLINT(concurrency-mt-unsafe): a stream of our own
        if (entry == nullptr) {
            break;
        }
        const QByteArray name(entry->d_name);
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
bool isBundleName(const QByteArray &name) {
    const auto suffixAt = [&name](qsizetype at) {
        return ::strncasecmp(name.constData() + at, ".app", static_cast<size_t>(kSuffixLength)) == 0;
    };
    for (qsizetype at = name.indexOf('.'); at >= 0; at = name.indexOf('.', at + 1)) {
        if (suffixAt(at)) {
            return at + kSuffixLength == name.size();
        }
    }
    return false;
}

class BundleSearch {
public:
    BundleSearch(QString identifier, std::optional<QStringList> *foundPaths, const PropertyList &propertyList)
        : m_identifier(std::move(identifier)), m_foundPaths(foundPaths), m_propertyList(propertyList) {}

    /// Neither depth nor cycles of links are looked after: the system's own limit on links in a path ends them.
    void walk(const QByteArray &folder) {
        for (const Entry &entry : entriesOf(folder)) {
            const QByteArray path = folder.endsWith('/') ? folder + entry.name : folder + '/' + entry.name;
            if (isBundleName(entry.name)) {
                examine(path);
            } else if (entry.mayBeFolder) {
                walk(path);
            }
        }
    }

private:
    void examine(const QByteArray &bundle) {
        auto contents = readRegularFileAt(AT_FDCWD, bundle + "/Contents/Info.plist", PropertyList::kMaximumMemory);
        auto *document = std::get_if<QByteArray>(&contents);
        if (document == nullptr || m_foundPaths == nullptr) {
            return;
        }
        const QVariant identifier =
            m_propertyList.parse(std::move(*document)).toMap().value(QStringLiteral("CFBundleIdentifier"));
        if (identifier.typeId() == QMetaType::QString && identifier.toString() == m_identifier) {
            if (!m_foundPaths->has_value()) {
                m_foundPaths->emplace();
            }
            (*m_foundPaths)->append(QFile::decodeName(bundle));
        }
    }

    const QString m_identifier;
    std::optional<QStringList> *m_foundPaths;
    const PropertyList &m_propertyList;
};

} // namespace

void pathsForIdent(const QString &identifier, const QString &fromPath, std::optional<QStringList> *foundPaths,
                   const PropertyList &propertyList) {
    BundleSearch(identifier, foundPaths, propertyList).walk(QFile::encodeName(fromPath));
}

} // namespace quillmark
