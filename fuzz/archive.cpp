#include "HeapLimit.h"
#include "support/OpenUnzipManager.h"

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>

using namespace quillmark;
namespace fs = std::filesystem;

namespace {

/// The folder "in", which every archive is alone in but for a link that leads out, and its neighbour.
class Place {
public:
    Place() {
        std::string path = fs::exists("/dev/shm") ? "/dev/shm/quillmark-fuzz-XXXXXX" : "quillmark-fuzz-XXXXXX";
        if (::mkdtemp(path.data()) == nullptr) {
            std::abort();
        }
        m_top = path;
        fs::create_directories(m_top / "outside");
        std::ofstream(m_top / "outside/file") << "untouched";
        clear();
    }
    Place(const Place &) = delete;
    Place &operator=(const Place &) = delete;
    ~Place() {
        std::error_code error;
        fs::remove_all(m_top, error);
    }

    fs::path in() const { return m_top / "in"; }
    void clear() const {
        fs::remove_all(in());
        fs::create_directory(in());
        fs::create_symlink("../outside", in() / "way");
    }
    bool isUntouched() const {
        std::string text;
        std::getline(std::ifstream(m_top / "outside/file"), text);
        return text == "untouched" && count(m_top / "outside") == 1 && count(m_top) == 2 &&
               fs::is_symlink(in() / "way");
    }

private:
    static std::ptrdiff_t count(const fs::path &folder) {
        return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
    }

    fs::path m_top;
};

/// Files that grow longer are short writes: small archives unfold into gigabytes.
class FileSizeLimit {
public:
    FileSizeLimit() {
        std::signal(SIGXFSZ, SIG_IGN); // the fuzzer sets its own, at a time of its own
        ::getrlimit(RLIMIT_FSIZE, &m_previous);
        const struct rlimit low { 1 << 16, m_previous.rlim_max };
        ::setrlimit(RLIMIT_FSIZE, &low);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_previous); }

private:
    struct rlimit m_previous {};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const Place place;
    const fs::path archive = place.in() / "archive.zip";
    std::ofstream(archive, std::ios::binary)
        .write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
    {
        const fuzz::HeapLimit limit(4);
        const FileSizeLimit small;
        test::OpenUnzipManager(archive.string()).extractAll();
    }
    if (!place.isUntouched()) {
        std::abort();
    }
    place.clear();
    return 0;
}
