#include "utils/HostIdentity.h"

#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "platform/values/Utf8Text.h"
#include "utils/Log.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>

namespace quillmark {

std::string getThisMachinesHostname() {
    std::array<char, 256> buffer{};
    if (!platform().systemInfo.readHostName(buffer.data(), buffer.size() - 1)) {
        logError("gethostname() failed");
    }
    const std::string name = validText(buffer.data());
    return name.ends_with(".local") ? name + '.' : name;
}

std::string getThisMachinesName() {
    const std::string hostname = getThisMachinesHostname();
    return hostname.substr(0, hostname.find('.'));
}

std::vector<std::string> ipAddressesFromHostname(const std::string &hostname) {
    std::vector<std::string> addresses;
    for (const std::uint32_t address : platform().systemInfo.ipv4Addresses(hostname)) {
        addresses.push_back(_stringFromIPAddress(address));
    }
    return addresses;
}

std::string _stringFromIPAddress(std::uint32_t address) {
    std::array<char, 64> text{};
    return ::inet_ntop(AF_INET, &address, text.data(), text.size());
}

bool areHostnamesSameMachine(const std::string &hostnameA, const std::string &hostnameB) {
    if (hostnameA == hostnameB) {
        return true;
    }
    const std::vector<std::string> addressesA = ipAddressesFromHostname(hostnameA);
    return std::any_of(addressesA.begin(), addressesA.end(), [&hostnameB](const std::string &addressA) {
        // Deliberately asked again for each address: hosts have one or two.
        const std::vector<std::string> addressesB = ipAddressesFromHostname(hostnameB);
        return std::find(addressesB.begin(), addressesB.end(), addressA) != addressesB.end();
    });
}

} // namespace quillmark
