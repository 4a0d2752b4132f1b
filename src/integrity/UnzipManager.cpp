#include "integrity/UnzipManager.h"

#include "integrity/ArchiveStream.h"
#include "platform/values/Pieces.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <minizip/unzip.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {

namespace {

constexpr size_t kNameSize = 256;
constexpr unsigned int kBufferSize = 8192;
constexpr mode_t kFileMode = 0666;
constexpr mode_t kFolderMode = 0775;
/// The status of an entry that would leave the archive's folder.
constexpr int kRefused = UNZ_BADZIPFILE;

// Archives from other systems separate the components of names with backslashes.
constexpr std::string_view kSeparators = "/\\";

bool isLetter(char character) { return (character | 0x20) >= 'a' && (character | 0x20) <= 'z'; }

/// True when the name stays inside the archive's folder, on any system.
bool isInside(std::string_view name) {
    if (name.empty()) {
        return true;
    }
    if (kSeparators.find(name[0]) != std::string_view::npos ||
        (name.size() > 1 && isLetter(name[0]) && name[1] == ':')) {
        return false;
    }
    std::string plain(name);
    std::replace(plain.begin(), plain.end(), '\\', '/');
    const auto components = pieces(plain, '/');
    return std::find(components.begin(), components.end(), "..") == components.end();
}

struct Split {
    std::string_view parent; ///< with its slash; empty when there is none
    std::string last;
};

Split split(std::string_view path) {
    while (!path.empty() && path.back() == '/') {
        path.remove_suffix(1);
    }
    const size_t last = path.rfind('/') + 1; // 0 without a slash
    return {path.substr(0, last), std::string(path.substr(last))};
}

bool isLink(int folder, const char *name) {
    struct stat attributes {};
    return ::fstatat(folder, name, &attributes, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(attributes.st_mode);
}

/// Opens the folder inside another one, to find files by. Not open when that fails, with errno.
Descriptor enter(int folder, const std::string &name) {
    if (name == "..") {
        errno = ELOOP;
        return {};
    }
    Descriptor inner(::openat(folder, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!inner.isOpen()) {
        const int error = errno;
        errno = isLink(folder, name.c_str()) ? ELOOP : error;
    }
    return inner;
}

} // namespace

UnzipManager::UnzipManager(const std::string &path) {
    const size_t slash = path.rfind('/');
    outputPath = (slash == std::string::npos ? "." : path.substr(0, slash)) + '/';
    if (path.find('\0') == std::string::npos) {
        zlib_filefunc64_def functions = archiveStreamFunctions();
        uf = unzOpen2_64(path.c_str(), &functions);
    }
    if (uf != nullptr) {
        m_folder = Descriptor(::open(outputPath.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
}

UnzipManager::~UnzipManager() {
    if (uf != nullptr) {
        unzCloseCurrentFile(uf);
    }
}

int UnzipManager::extractAll() {
    unz_global_info information{};
    if (const int status = unzGetGlobalInfo(uf, &information); status != UNZ_OK) {
        return status;
    }
    for (uLong i = 0; i < information.number_entry; ++i) {
        if (extractCurrentFile() != UNZ_OK || (i + 1 < information.number_entry && unzGoToNextFile(uf) != UNZ_OK)) {
            break;
        }
    }
    return UNZ_OK;
}

int UnzipManager::extractCurrentFile() {
    std::array<char, kNameSize> nameBuffer{};
    unz_file_info information{};
    int status = unzGetCurrentFileInfo(uf, &information, nameBuffer.data(), nameBuffer.size(), nullptr, 0, nullptr, 0);
    if (status != UNZ_OK) {
        return status;
    }
    nameBuffer.back() = '\0'; // minizip puts no end behind a name that fills the buffer
    const std::unique_ptr<char[]> buffer(new (std::nothrow) char[kBufferSize]);
    if (buffer == nullptr) {
        return UNZ_INTERNALERROR;
    }

    const std::string_view name(nameBuffer.data());
    if (!isInside(name)) {
        return kRefused;
    }
    const size_t separator = name.find_last_of(kSeparators);
    if (name.empty() || separator == name.size() - 1) {
        return mymkdir(name.data()) != 0 && leadsThroughLink(name) ? kRefused : UNZ_OK;
    }

    status = unzOpenCurrentFilePassword(uf, nullptr);
    if (status != UNZ_OK) {
        return status;
    }
    Descriptor file = createFile(name);
    if (!file.isOpen() && errno != ELOOP && separator != std::string_view::npos) {
        // Deliberately the whole name: when its folders are missing, a folder takes the file's place.
        makedir(name.data());
        file = createFile(name);
    }
    if (file.isOpen()) {
        status = writeCurrentFile(file.get(), buffer.get());
        file.close();
    } else if (errno == ELOOP) {
        status = kRefused;
    }
    const int closeStatus = unzCloseCurrentFile(uf); // tells of a wrong checksum
    return status != UNZ_OK ? status : closeStatus;
}

int UnzipManager::writeCurrentFile(int file, char *buffer) {
    for (;;) {
        const int count = unzReadCurrentFile(uf, buffer, kBufferSize);
        if (count < 1) {
            return count;
        }
        if (::write(file, buffer, static_cast<size_t>(count)) != count) {
            return UNZ_ERRNO;
        }
    }
}

int UnzipManager::makedir(const char *path) {
    std::string copy(path);
    if (copy.empty()) {
        return 0;
    }
    if (copy.back() == '/') {
        copy.pop_back();
    }
    if (mymkdir(copy.c_str()) == 0) {
        return 1;
    }
    for (size_t end = 0; end < copy.size();) {
        end = std::min(copy.find_first_of(kSeparators, end + 1), copy.size());
        if (mymkdir(copy.substr(0, end).c_str()) != 0 && errno == ENOENT) {
            return 0;
        }
    }
    return 1;
}

int UnzipManager::mymkdir(const char *path) {
    return findParent(path) ? ::mkdirat(parent(), split(path).last.c_str(), kFolderMode) : -1;
}

bool UnzipManager::findParent(std::string_view path) {
    const std::string_view wanted = split(path).parent;
    if (wanted == m_parentPath) {
        return true;
    }
    Descriptor folder;
    for (size_t begin = 0; begin < wanted.size();) {
        const size_t end = wanted.find('/', begin);
        const std::string name(wanted.substr(begin, end - begin));
        begin = end + 1;
        if (!name.empty() && name != ".") {
            folder = enter(folder.isOpen() ? folder.get() : m_folder.get(), name);
            if (!folder.isOpen()) {
                return false;
            }
        }
    }
    m_parent = std::move(folder);
    m_parentPath = wanted;
    return true;
}

bool UnzipManager::leadsThroughLink(std::string_view path) {
    return findParent(path) ? isLink(parent(), split(path).last.c_str()) : errno == ELOOP;
}

Descriptor UnzipManager::createFile(std::string_view path) {
    if (!findParent(path)) {
        return {};
    }
    // Neither waits for the reader of a pipe nor takes a terminal: both may stand there already.
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    return Descriptor(::openat(parent(), split(path).last.c_str(), kFlags, kFileMode));
}

} // namespace quillmark
