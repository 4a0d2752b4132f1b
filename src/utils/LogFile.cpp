#include "utils/LogFile.h"

#include "platform/process/Descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {

bool LogFile::open(const std::string &path) {
    constexpr mode_t kMode = 0666; // less the user's mask
    // Whoever can write to the folder may have put something else in the file's place: a link, or a pipe that nobody
    // reads.
    Descriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK, kMode));
    struct stat status {};
    if (file.isOpen() && ::fstat(file.get(), &status) == 0 && !S_ISREG(status.st_mode)) {
        file.close();
        errno = EINVAL;
    }
    if (!file.isOpen()) {
        const int reason = errno;
        close();
        errno = reason;
        return false;
    }
    const int descriptor = file.release();
    if (m_stream == nullptr) {
        m_stream = ::fdopen(descriptor, "a");
    } else if (!replaceDescriptor(descriptor)) {
        return false;
    }
    m_current.store(m_stream, std::memory_order_release);
    return m_stream != nullptr;
}

void LogFile::close() {
    m_current.store(nullptr, std::memory_order_release);
    if (m_stream != nullptr) {
        // A writer that still holds the stream writes into nothing.
        const int nothing = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (nothing >= 0) {
            replaceDescriptor(nothing);
        }
    }
}

/// Takes the descriptor over.
bool LogFile::replaceDescriptor(int descriptor) {
    ::flockfile(m_stream);
    std::fflush(m_stream);
    const bool isReplaced = ::dup3(descriptor, ::fileno(m_stream), O_CLOEXEC) >= 0;
    std::clearerr(m_stream);
    ::funlockfile(m_stream);
    ::close(descriptor);
    return isReplaced;
}

std::uint32_t _fileLength(FILE *stream) {
    if (stream == nullptr) {
        return 0xFFFFFFFF;
    }
    ::flockfile(stream);
    const off_t position = ::ftello(stream);
    ::fseeko(stream, 0, SEEK_END);
    const off_t length = ::ftello(stream);
    ::fseeko(stream, static_cast<std::uint32_t>(position), SEEK_SET);
    ::funlockfile(stream);
    return static_cast<std::uint32_t>(length);
}

bool hasGrownTooLong(FILE *stream) { return _fileLength(stream) > static_cast<std::uint32_t>(kMaxLogFileLength); }

} // namespace quillmark
