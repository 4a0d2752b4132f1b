#include "platform/ReadFile.h"

#include "platform/Descriptor.h"

#include <QFile>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {

std::variant<QByteArray, ReadError> readRegularFileAt(int folder, const char *path, qint64 maximumSize) {
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
    QByteArray contents(attributes.st_size, Qt::Uninitialized);
    qsizetype filled = 0;
    while (filled < contents.size()) {
        const ssize_t count =
            ::read(file.get(), contents.data() + filled, static_cast<size_t>(contents.size() - filled));
        if (count < 0 && errno != EINTR) {
            return ReadError{errno};
        }
        if (count == 0) { // shortened meanwhile
            contents.truncate(filled);
        }
        filled += count > 0 ? count : 0;
    }
    return contents;
}

std::variant<QByteArray, ReadError> readRegularFile(const QString &path, qint64 maximumSize) {
    if (path.isEmpty() || path.contains(QChar(0))) {
        return ReadError{ENOENT};
    }
    return readRegularFileAt(AT_FDCWD, QFile::encodeName(path).constData(), maximumSize);
}

} // namespace quillmark
