#include "Command.h"

#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "utils/HostIdentity.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace quillmark::ctl {

namespace {

template <class Content>
Value orNull(const std::optional<Content> &content) {
    return content ? Value(*content) : Value();
}

Action defineSystem(CLI::App & /*app*/) {
    return [](const Output &output) {
        const SystemInfo &system = platform().systemInfo;
        const SystemVersion version = system.systemVersion();
        output.json(Dictionary{{"major", orNull(version.major)},
                               {"minor", orNull(version.minor)},
                               {"bugfix", orNull(version.bugfix)},
                               {"intel", orNull(system.isIntel())},
                               {"appKit", system.appKitVersion()}});
        return Answer::Yes;
    };
}

Action defineHostName(CLI::App & /*app*/) {
    return [](const Output &output) {
        output.line(getThisMachinesHostname());
        return Answer::Yes;
    };
}

Action defineHostShort(CLI::App & /*app*/) {
    return [](const Output &output) {
        output.line(getThisMachinesName());
        return Answer::Yes;
    };
}

Action defineHostAddresses(CLI::App &app) {
    const auto host = std::make_shared<std::string>();
    app.add_option("HOST", *host, "a host name")->required();
    return [host](const Output &output) {
        const auto addresses = ipAddressesFromHostname(*host);
        output.json(listOf(addresses));
        return addresses.empty() ? Answer::No : Answer::Yes;
    };
}

Action defineHostSame(CLI::App &app) {
    const auto hosts = std::make_shared<std::pair<std::string, std::string>>();
    app.add_option("A", hosts->first, "a host name")->required();
    app.add_option("B", hosts->second, "another one")->required();
    return [hosts](const Output & /*output*/) {
        const bool isSame = areHostnamesSameMachine(hosts->first, hosts->second);
        return isSame ? Answer::Yes : Answer::No;
    };
}

constexpr Command kCommands[] = {
    {nullptr, "system", "tell the system's version and processor", "quillmarkctl system", defineSystem},
    {"host", "name", "print this computer's host name", "quillmarkctl host name", defineHostName},
    {"host", "short", "print the host name up to its first dot", "quillmarkctl host short", defineHostShort},
    {"host", "addresses", "list the IPv4 addresses of a host", "quillmarkctl host addresses localhost",
     defineHostAddresses},
    {"host", "same", "tell by the exit status whether two names are one computer",
     "quillmarkctl host same office office.example.com", defineHostSame},
};

} // namespace

std::span<const Command> systemCommands() { return kCommands; }

} // namespace quillmark::ctl
