/// Finding a bundle by its identifier: listing the folders alone, fts with our property-list reader, ours.

#include "platform/files/BundleSearch.h"
#include "platform/propertylist/PropertyListFormats.h"

#include <array>
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <fts.h>
#include <memory>
#include <string>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace quillmark;

constexpr int kFolders = 3000;
constexpr int kApplications = 300;
constexpr std::string_view kSuffix = ".app";
constexpr const char *kIdentifier = "com.quillmark.application7";

/// 3,000 folders, ten in each of the 300 that hold an application.
class Tree {
public:
    Tree() {
        std::filesystem::remove_all(m_root);
        for (int i = 0; i < kApplications; ++i) {
            const auto folder = m_root / ("Group " + std::to_string(i));
            for (int j = 1; j < kFolders / kApplications; ++j) {
                std::filesystem::create_directories(folder / ("Folder " + std::to_string(j)));
                std::ofstream(folder / ("File " + std::to_string(j)));
            }
            const auto contents = folder / ("Application " + std::to_string(i) + ".app/Contents");
            std::filesystem::create_directories(contents / "MacOS");
            std::ofstream(contents / "Info.plist") << information(i);
        }
    }
    Tree(const Tree &) = delete;
    Tree &operator=(const Tree &) = delete;
    ~Tree() { std::filesystem::remove_all(m_root); }
    std::string path() const { return m_root; }

private:
    static std::string information(int number) {
        Dictionary values{{"CFBundleIdentifier", "com.quillmark.application" + std::to_string(number)}};
        for (const char *key : {"CFBundleDevelopmentRegion", "CFBundleExecutable", "CFBundleIconFile",
                                "CFBundleInfoDictionaryVersion", "CFBundleName", "CFBundlePackageType",
                                "CFBundleShortVersionString", "CFBundleVersion", "NSPrincipalClass"}) {
            values.insert_or_assign(key, "Value of usual length");
        }
        return PropertyListFormats().toXml(values).value();
    }

    const std::filesystem::path m_root = std::filesystem::temp_directory_path() / "quillmark-bench-applications";
};

Tree &tree() {
    static Tree instance;
    return instance;
}

/// What the system hands out for a folder, without a library in between.
struct RawEntry {
    ino64_t inode;
    off64_t next;
    unsigned short length;
    unsigned char type;
    char name[1];
};

size_t listed(int parent, const char *name) {
    const int folder = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    alignas(RawEntry) std::array<char, 32768> buffer; // NOLINT: filled by the system
    size_t count = 0;
    for (long filled = 0; (filled = ::syscall(SYS_getdents64, folder, buffer.data(), buffer.size())) > 0;) {
        for (long at = 0; at < filled;) {
            const auto *entry = reinterpret_cast<const RawEntry *>(buffer.data() + at);
            const std::string_view entryName(static_cast<const char *>(entry->name));
            at += entry->length;
            ++count;
            if (entry->type == DT_DIR && entryName != "." && entryName != ".." && !entryName.ends_with(kSuffix)) {
                count += listed(folder, static_cast<const char *>(entry->name));
            }
        }
    }
    ::close(folder);
    return count;
}

/// Follows links, as the search must.
std::vector<std::string> foundByFts(const std::string &root, const PropertyList &propertyList) {
    std::string path = root;
    std::array<char *, 2> roots = {path.data(), nullptr};
    const std::unique_ptr<FTS, int (*)(FTS *)> walk(::fts_open(roots.data(), FTS_LOGICAL, nullptr), ::fts_close);
    std::vector<std::string> found;
    while (FTSENT *entry = ::fts_read(walk.get())) {
        if (entry->fts_info == FTS_D &&
            std::string_view(static_cast<const char *>(entry->fts_name)).ends_with(kSuffix)) {
            ::fts_set(walk.get(), entry, FTS_SKIP);
            const std::string bundle = entry->fts_path;
            if (valueOf(propertyList.readDictionary(bundle + "/Contents/Info.plist"), "CFBundleIdentifier") ==
                kIdentifier) {
                found.push_back(bundle);
            }
        }
    }
    return found;
}

void byListing(benchmark::State &state) {
    const std::string root = tree().path();
    for ([[maybe_unused]] auto run : state) {
        benchmark::DoNotOptimize(listed(AT_FDCWD, root.c_str()));
    }
}
void byPeer(benchmark::State &state) {
    const std::string root = tree().path();
    const PropertyListFormats propertyList;
    for ([[maybe_unused]] auto run : state) {
        if (foundByFts(root, propertyList).size() != 1) {
            state.SkipWithError("the peer found something else");
        }
    }
}
void byUs(benchmark::State &state) {
    const std::string root = tree().path();
    const PropertyListFormats propertyList;
    for ([[maybe_unused]] auto run : state) {
        std::optional<std::vector<std::string>> found;
        pathsForIdent(kIdentifier, root, &found, propertyList);
        if (!found || found->size() != 1) {
            state.SkipWithError("we found something else");
        }
    }
}

BENCHMARK(byListing)->Name("bundle search/floor")->Unit(benchmark::kMillisecond);
BENCHMARK(byPeer)->Name("bundle search/peer")->Unit(benchmark::kMillisecond);
BENCHMARK(byUs)->Name("bundle search/ours")->Unit(benchmark::kMillisecond);

} // namespace
