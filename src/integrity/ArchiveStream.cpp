#include "integrity/ArchiveStream.h"

#include "platform/process/Descriptor.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <minizip/ioapi.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {

namespace {

/// Reads of this size and more are not kept: they are the contents of large entries.
constexpr size_t kLargeRead = 16384;

/// A piece of the file.
struct Window {
    off_t begin = 0;
    size_t length = 0;
    std::array<char, 65536> bytes{};

    bool holds(off_t position) const { return position >= begin && position - begin < static_cast<off_t>(length); }
};

class ArchiveStream {
public:
    explicit ArchiveStream(Descriptor file) : m_file(std::move(file)) {}

    size_t read(char *target, size_t size) {
        size_t done = 0;
        while (done < size) {
            const size_t count = size >= kLargeRead ? readFile(target + done, size - done, m_position)
                                                    : readWindow(target + done, size - done);
            if (count == 0) {
                break;
            }
            done += count;
            m_position += static_cast<off_t>(count);
        }
        return done;
    }
    off_t position() const { return m_position; }
    /// Moves to an offset from `origin`, possibly behind the end. \returns false when there is no such place.
    bool seek(ZPOS64_T offset, int origin) {
        off_t base = 0;
        if (origin == ZLIB_FILEFUNC_SEEK_CUR) {
            base = m_position;
        } else if (origin == ZLIB_FILEFUNC_SEEK_END) {
            struct stat attributes {};
            if (::fstat(m_file.get(), &attributes) != 0) {
                return false;
            }
            base = attributes.st_size;
        }
        off_t position = 0;
        if (__builtin_add_overflow(base, static_cast<off_t>(offset), &position) || position < 0) {
            return false;
        }
        m_position = position;
        return true;
    }
    bool hasFailed() const { return m_hasFailed; }

private:
    size_t readFile(char *target, size_t size, off_t position) {
        const ssize_t count = uninterrupted([&] { return ::pread(m_file.get(), target, size, position); });
        m_hasFailed = m_hasFailed || count < 0;
        return count > 0 ? static_cast<size_t>(count) : 0;
    }
    size_t readWindow(char *target, size_t size) {
        if (!m_recent->holds(m_position)) {
            std::swap(m_recent, m_other);
        }
        if (!m_recent->holds(m_position)) {
            m_recent->begin = m_position;
            m_recent->length = readFile(m_recent->bytes.data(), m_recent->bytes.size(), m_position);
        }
        const auto offset = static_cast<size_t>(m_position - m_recent->begin);
        const size_t count = std::min(size, m_recent->length - offset);
        std::memcpy(target, m_recent->bytes.data() + offset, count);
        return count;
    }

    Descriptor m_file;
    off_t m_position = 0;
    bool m_hasFailed = false;
    std::array<Window, 2> m_windows; // one follows the directory, one the entries
    Window *m_recent = m_windows.data();
    Window *m_other = m_windows.data() + 1;
};

ArchiveStream &of(voidpf stream) { return *static_cast<ArchiveStream *>(stream); }

voidpf openStream(voidpf /*opaque*/, const void *path, int /*mode*/) {
    Descriptor file(::open(static_cast<const char *>(path), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat attributes {};
    if (!file.isOpen() || ::fstat(file.get(), &attributes) != 0 || !S_ISREG(attributes.st_mode)) {
        return nullptr;
    }
    return new ArchiveStream(std::move(file));
}

uLong readStream(voidpf /*opaque*/, voidpf stream, void *buffer, uLong size) {
    return of(stream).read(static_cast<char *>(buffer), size);
}

ZPOS64_T tellStream(voidpf /*opaque*/, voidpf stream) { return static_cast<ZPOS64_T>(of(stream).position()); }

long seekStream(voidpf /*opaque*/, voidpf stream, ZPOS64_T offset, int origin) {
    return of(stream).seek(offset, origin) ? 0 : -1;
}

int closeStream(voidpf /*opaque*/, voidpf stream) {
    delete &of(stream);
    return 0;
}

int hasStreamFailed(voidpf /*opaque*/, voidpf stream) { return of(stream).hasFailed() ? 1 : 0; }

} // namespace

const zlib_filefunc64_def &archiveStreamFunctions() {
    static constexpr zlib_filefunc64_def kFunctions = {openStream, readStream,  /*zwrite_file*/ nullptr, tellStream,
                                                       seekStream, closeStream, hasStreamFailed,         nullptr};
    return kFunctions;
}

} // namespace quillmark
