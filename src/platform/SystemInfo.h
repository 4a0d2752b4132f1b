#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quillmark {

/// The three numbers of an operating system's version.
struct SystemVersion {
    std::optional<std::int32_t> major;
    std::optional<std::int32_t> minor;
    std::optional<std::int32_t> bugfix;
};

/// Facts about this process and the system that it runs on.
class SystemInfo {
public:
    virtual ~SystemInfo() = default;

    virtual std::int32_t processIdentifier() const = 0;
    /// The base name of this process's executable.
    virtual std::string processName() const = 0;
    /// The calling thread's number in the system's own count.
    virtual std::uint32_t currentThreadNumber() const = 0;
    /// The system's version; a number that can't be read is absent, and so are those behind it.
    virtual SystemVersion systemVersion() const = 0;
    /// Whether the processor is of Intel's kind; absent when that can't be told.
    virtual std::optional<bool> isIntel() const = 0;
    /// The version of the window library that macOS would report; newer ones have larger numbers.
    virtual double appKitVersion() const = 0;

    /// Writes the host name, cut to `size` bytes, without a zero byte when it is cut. \returns false when there is
    /// none.
    virtual bool readHostName(char *buffer, size_t size) const = 0;
    /// The IPv4 addresses of a host, each in network byte order, in the resolver's order; none when it is unknown.
    virtual std::vector<std::uint32_t> ipv4Addresses(const std::string &hostName) const = 0;

    /// True while a debugger or another tracer is attached to this process.
    virtual bool isTraced() const = 0;
    /// The system's text for an error number, or nothing when it has none.
    virtual std::optional<std::string> posixErrorText(int error) const = 0;
};

} // namespace quillmark
