#pragma once

#include "platform/SystemInfo.h"

namespace quillmark {

class PropertyList;

/// A kernel's version where a Mac's is asked for. It tells nothing about one, so whatever it grows to, it stays below
/// them all, and what depends on it stays as it is.
SystemVersion belowAnyMac(SystemVersion kernel);

class LinuxSystemInfo final : public SystemInfo {
public:
    explicit LinuxSystemInfo(const PropertyList &propertyList) : m_propertyList(propertyList) {}

    std::int32_t processIdentifier() const override;
    std::string processName() const override;
    std::uint32_t currentThreadNumber() const override;
    /// That of /System/Library/CoreServices/SystemVersion.plist, else that of the kernel.
    SystemVersion systemVersion() const override;
    std::optional<bool> isIntel() const override;
    double appKitVersion() const override;
    bool readHostName(char *buffer, size_t size) const override;
    std::vector<std::uint32_t> ipv4Addresses(const std::string &hostName) const override;
    bool isTraced() const override;
    std::optional<std::string> posixErrorText(int error) const override;

private:
    const PropertyList &m_propertyList;
};

} // namespace quillmark
