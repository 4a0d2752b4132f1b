#include "platform/linux/LinuxSystemInfo.h"

#include "platform/PropertyList.h"
#include "platform/files/Path.h"
#include "platform/linux/ExecutablePath.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace quillmark {

namespace {

/// The numbers between the dots, up to the first piece that does not begin with one.
SystemVersion systemVersionIn(std::string_view text) {
    SystemVersion version;
    // Of a system's first release the last number is left out.
    const bool isFirstRelease = std::count(text.begin(), text.end(), '.') == 1;
    for (std::optional<std::int32_t> *number : {&version.major, &version.minor, &version.bugfix}) {
        const size_t end = std::min(text.find('.'), text.size());
        std::int32_t value = 0;
        if (std::from_chars(text.data(), text.data() + end, value).ec != std::errc()) {
            break;
        }
        *number = value;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    if (isFirstRelease && version.minor) {
        version.bugfix = 0;
    }
    return version;
}

} // namespace

SystemVersion belowAnyMac(SystemVersion kernel) {
    constexpr std::int32_t kHighest = 9; // the first Mac is 10.0
    if (kernel.major) {
        kernel.major = std::min(*kernel.major, kHighest);
    }
    return kernel;
}

std::int32_t LinuxSystemInfo::processIdentifier() const { return ::getpid(); }

std::string LinuxSystemInfo::processName() const {
    const auto path = executablePath();
    return path ? lastPathComponent(*path) : program_invocation_short_name;
}

std::uint32_t LinuxSystemInfo::currentThreadNumber() const {
    thread_local const auto number = static_cast<std::uint32_t>(::gettid());
    return number;
}

SystemVersion LinuxSystemInfo::systemVersion() const {
    const Dictionary description = m_propertyList.readDictionary("/System/Library/CoreServices/SystemVersion.plist");
    const std::string text = valueOf(description, "ProductVersion").text().value_or("");
    struct utsname kernel {};
    if (!text.empty() || ::uname(&kernel) != 0) {
        return systemVersionIn(text);
    }
    return belowAnyMac(systemVersionIn(kernel.release));
}

std::optional<bool> LinuxSystemInfo::isIntel() const {
    struct utsname kernel {};
    if (::uname(&kernel) != 0) {
        return std::nullopt;
    }
    const std::string_view machine(kernel.machine);
    return machine == "x86_64" || (machine.starts_with('i') && machine.ends_with("86"));
}

double LinuxSystemInfo::appKitVersion() const {
    return 2487; // of a current macOS, so that the newest ways are taken
}

bool LinuxSystemInfo::readHostName(char *buffer, size_t size) const {
    // A cut name is a name.
    return ::gethostname(buffer, size) == 0 || errno == ENAMETOOLONG;
}

std::vector<std::uint32_t> LinuxSystemInfo::ipv4Addresses(const std::string &hostName) const {
    std::vector<std::uint32_t> addresses;
    std::vector<char> buffer(1024);
    struct hostent entry {};
    struct hostent *found = nullptr;
    int error = 0;
    while (::gethostbyname2_r(hostName.c_str(), AF_INET, &entry, buffer.data(), buffer.size(), &found, &error) ==
           ERANGE) {
        buffer.resize(buffer.size() * 2);
    }
    if (found == nullptr || found->h_length != sizeof(std::uint32_t)) {
        return addresses;
    }
    for (char **address = found->h_addr_list; *address != nullptr; ++address) {
        std::uint32_t value = 0;
        std::memcpy(&value, *address, sizeof value);
        addresses.push_back(value);
    }
    return addresses;
}

bool LinuxSystemInfo::isTraced() const {
    constexpr std::string_view kLabel = "TracerPid:\t";
    const std::unique_ptr<FILE, int (*)(FILE *)> status(std::fopen("/proc/self/status", "re"), std::fclose);
    std::array<char, 256> line{};
    while (status != nullptr && std::fgets(line.data(), line.size(), status.get()) != nullptr) {
        if (std::string_view(line.data()).starts_with(kLabel)) {
            return line[kLabel.size()] != '0';
        }
    }
    return false;
}

std::optional<std::string> LinuxSystemInfo::posixErrorText(int error) const {
    const char *text = ::strerrordesc_np(error);
    return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
}

} // namespace quillmark
