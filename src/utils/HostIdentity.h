#pragma once

#include <QString>
#include <QStringList>

namespace quillmark {

/// This computer's host name. One that ends in ".local" gets a dot at its end, other names come as they are.
QString getThisMachinesHostname();

/// The host name up to its first dot.
QString getThisMachinesName();

/// The IPv4 addresses of a host in dotted decimal form, in the resolver's order; none for a name that it doesn't know.
QStringList ipAddressesFromHostname(const QString &hostname);

/// An IPv4 address, given in network byte order, in dotted decimal form.
QString _stringFromIPAddress(quint32 address);

/// True when the names are equal, letter by letter, or when the hosts share an IPv4 address.
bool areHostnamesSameMachine(const QString &hostnameA, const QString &hostnameB);

} // namespace quillmark
