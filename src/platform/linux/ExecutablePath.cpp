#include "platform/linux/ExecutablePath.h"

#include <QFile>
#include <array>
#include <climits>
#include <cstdlib>
#include <sys/auxv.h>
#include <unistd.h>

namespace quillmark {

QString executablePath() {
    std::array<char, PATH_MAX> buffer{};
    const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0) {
        const auto *startedBy =
            reinterpret_cast<const char *>(::getauxval(AT_EXECFN)); // NOLINT: how the kernel tells it
        return startedBy != nullptr && ::realpath(startedBy, buffer.data()) != nullptr
                   ? QFile::decodeName(buffer.data())
                   : QString();
    }
    QByteArray path(buffer.data(), length);
    if (path.endsWith(" (deleted)")) { // an update took the file's place
        path.chop(10);
    }
    return QFile::decodeName(path);
}

} // namespace quillmark
