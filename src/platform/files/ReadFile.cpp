#include "platform/files/ReadFile.h"

#include "platform/process/Descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {

std::variant<std::string, ReadError> readRegularFileAt(int folder, const char *path, std::int64_t maximumSize) {
    const Descriptor file(::openat(folder, path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat attributes {};
    if (!file.isOpen() || ::fstat(file.get(), &attributes) != 0) {
        return ReadError{errno};
    }
    if (!S_ISREG(attributes.st_mode)) {
        return ReadError{EINVAL};
    }
    if (attributes.st_size > maximumSize) {
        return ReadError{EFBIG};
    }
    std::string contents(static_cast<size_t>(attributes.st_size), '\0');
    size_t filled = 0;
    while (filled < contents.size()) {
        const ssize_t count =
            uninterrupted([&] { return ::read(file.get(), contents.data() + filled, contents.size() - filled); });
        if (count < 0) {
            return ReadError{errno};
        }
        if (count == 0) { // shortened meanwhile
            contents.resize(filled);
        }
        filled += static_cast<size_t>(count);
    }
    return contents;
}

std::variant<std::string, ReadError> readRegularFile(const std::string &path, std::int64_t maximumSize) {
    if (path.empty() || path.find('\0') != std::string::npos) {
        return ReadError{ENOENT};
    }
    return readRegularFileAt(AT_FDCWD, path.c_str(), maximumSize);
}

} // namespace quillmark
