#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillmark {

/// This computer's host name. One that ends in ".local" gets a dot at its end, other names come as they are.
std::string getThisMachinesHostname();

/// The host name up to its first dot.
std::string getThisMachinesName();

/// The IPv4 addresses of a host in dotted decimal form, in the resolver's order; none for a name that it doesn't know.
std::vector<std::string> ipAddressesFromHostname(const std::string &hostname);

/// An IPv4 address, given in network byte order, in dotted decimal form.
std::string _stringFromIPAddress(std::uint32_t address);

/// True when the names are equal, letter by letter, or when the hosts share an IPv4 address.
bool areHostnamesSameMachine(const std::string &hostnameA, const std::string &hostnameB);

} // namespace quillmark
