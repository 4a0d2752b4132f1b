#include "platform/linux/LinuxSystemInfo.h"

#include <QFile>
#include <array>
#include <climits>
#include <cstring>
#include <unistd.h>

namespace quillmark {

qint32 LinuxSystemInfo::processIdentifier() const { return ::getpid(); }

QString LinuxSystemInfo::processName() const {
    std::array<char, PATH_MAX> buffer{};
    const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0) { // no /proc
        return QFile::decodeName(program_invocation_short_name);
    }
    QByteArray executable(buffer.data(), length);
    if (executable.endsWith(" (deleted)")) { // an update took the file's place
        executable.chop(10);
    }
    return QFile::decodeName(executable.mid(executable.lastIndexOf('/') + 1));
}

quint32 LinuxSystemInfo::currentThreadNumber() const {
    thread_local const auto number = static_cast<quint32>(::gettid());
    return number;
}

bool LinuxSystemInfo::isTraced() const {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return false;
    }
    constexpr char kLabel[] = "\nTracerPid:\t";
    const QByteArray text = status.readAll();
    const qsizetype at = text.indexOf(kLabel);
    return at >= 0 && text.mid(at + static_cast<qsizetype>(std::strlen(kLabel)), 1) != "0";
}

std::optional<QString> LinuxSystemInfo::posixErrorText(int error) const {
    const char *text = ::strerrordesc_np(error);
    return text != nullptr ? std::optional(QString::fromUtf8(text)) : std::nullopt;
}

} // namespace quillmark
