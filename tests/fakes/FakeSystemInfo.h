#pragma once

#include "platform/SystemInfo.h"

#include <map>

namespace quillmark::test {

class FakeSystemInfo final : public SystemInfo {
public:
    std::int32_t identifier = 311;
    std::string name = "Launcher";
    std::uint32_t threadNumber = 0x1a03;
    bool traced = false;
    SystemVersion version = {10, 6, 8};
    std::optional<bool> intel = true;
    double appKit = 1038.36;
    std::string hostName = "office";
    bool hasHostName = true;
    std::map<std::string, std::vector<std::uint32_t>> addresses; ///< in network byte order
    mutable std::vector<std::string> lookups;                    ///< the hosts that were asked for, in order
    std::map<int, std::string> errorTexts = {{2, "No such file or directory"}};

    std::int32_t processIdentifier() const override { return identifier; }
    std::string processName() const override { return name; }
    std::uint32_t currentThreadNumber() const override { return threadNumber; }
    SystemVersion systemVersion() const override { return version; }
    std::optional<bool> isIntel() const override { return intel; }
    double appKitVersion() const override { return appKit; }
    bool readHostName(char *buffer, size_t size) const override {
        hostName.copy(buffer, size);
        return hasHostName;
    }
    std::vector<std::uint32_t> ipv4Addresses(const std::string &host) const override {
        lookups.push_back(host);
        const auto known = addresses.find(host);
        return known != addresses.end() ? known->second : std::vector<std::uint32_t>();
    }
    bool isTraced() const override { return traced; }
    std::optional<std::string> posixErrorText(int error) const override {
        const auto text = errorTexts.find(error);
        return text != errorTexts.end() ? std::optional(text->second) : std::nullopt;
    }
};

} // namespace quillmark::test
