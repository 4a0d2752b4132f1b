#include "platform/linux/LinuxSystemInfo.h"

#include "platform/Path.h"
#include "platform/PropertyList.h"
#include "platform/linux/ExecutablePath.h"

#include <QFile>
#include <QStringList>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <netdb.h>
#include <sys/socket.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace quillmark {

namespace {

/// The numbers between the dots, up to the first piece that does not begin with one.
SystemVersion systemVersionIn(const QString &text) {
    SystemVersion version;
    const QStringList pieces = text.split(u'.');
    qsizetype index = 0;
    for (std::optional<qint32> *number : {&version.major, &version.minor, &version.bugfix}) {
        const QByteArray piece = index < pieces.size() ? pieces[index].toLatin1() : QByteArray();
        qint32 value = 0;
        if (std::from_chars(piece.begin(), piece.end(), value).ec != std::errc()) {
            break;
        }
        *number = value;
        ++index;
    }
    // Of a system's first release the last number is left out.
    if (pieces.size() == 2 && version.minor) {
        version.bugfix = 0;
    }
    return version;
}

} // namespace

SystemVersion belowAnyMac(SystemVersion kernel) {
    constexpr qint32 kHighest = 9; // the first Mac is 10.0
    if (kernel.major) {
        kernel.major = std::min(*kernel.major, kHighest);
    }
    return kernel;
}

qint32 LinuxSystemInfo::processIdentifier() const { return ::getpid(); }

QString LinuxSystemInfo::processName() const {
    const QString path = executablePath();
    return path.isNull() ? QFile::decodeName(program_invocation_short_name) : lastPathComponent(path);
}

quint32 LinuxSystemInfo::currentThreadNumber() const {
    thread_local const auto number = static_cast<quint32>(::gettid());
    return number;
}

SystemVersion LinuxSystemInfo::systemVersion() const {
    const QVariantMap description =
        m_propertyList.readDictionary(QStringLiteral("/System/Library/CoreServices/SystemVersion.plist"));
    const QString text = description.value(QStringLiteral("ProductVersion")).toString();
    struct utsname kernel {};
    if (!text.isEmpty() || ::uname(&kernel) != 0) {
        return systemVersionIn(text);
    }
    return belowAnyMac(systemVersionIn(QString::fromLocal8Bit(kernel.release)));
}

std::optional<bool> LinuxSystemInfo::isIntel() const {
    struct utsname kernel {};
    if (::uname(&kernel) != 0) {
        return std::nullopt;
    }
    const QByteArray machine(kernel.machine);
    return machine == "x86_64" || (machine.startsWith('i') && machine.endsWith("86"));
}

double LinuxSystemInfo::appKitVersion() const {
    return 2487; // of a current macOS, so that the newest ways are taken
}

bool LinuxSystemInfo::readHostName(char *buffer, size_t size) const {
    // A cut name is a name.
    return ::gethostname(buffer, size) == 0 || errno == ENAMETOOLONG;
}

std::vector<quint32> LinuxSystemInfo::ipv4Addresses(const QByteArray &hostName) const {
    std::vector<quint32> addresses;
    std::vector<char> buffer(1024);
    struct hostent entry {};
    struct hostent *found = nullptr;
    int error = 0;
    while (::gethostbyname2_r(hostName.constData(), AF_INET, &entry, buffer.data(), buffer.size(), &found, &error) ==
           ERANGE) {
        buffer.resize(buffer.size() * 2);
    }
    if (found == nullptr || found->h_length != sizeof(quint32)) {
        return addresses;
    }
    for (char **address = found->h_addr_list; *address != nullptr; ++address) {
        quint32 value = 0;
        std::memcpy(&value, *address, sizeof value);
        addresses.push_back(value);
    }
    return addresses;
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
