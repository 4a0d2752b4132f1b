#include "utils/HostIdentity.h"

#include "platform/Platform.h"
#include "platform/SystemInfo.h"
#include "utils/Assert.h"
#include "utils/Log.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>

namespace quillmark {

QString getThisMachinesHostname() {
    std::array<char, 256> buffer{};
    if (!platform().systemInfo.readHostName(buffer.data(), buffer.size() - 1)) {
        logError("gethostname() failed");
    }
    QString name = QString::fromUtf8(buffer.data());
    return name.endsWith(u".local") ? name + u'.' : name;
}

QString getThisMachinesName() {
    const QStringList hostnameComponents = getThisMachinesHostname().split(u'.');
    QUILLMARK_ASSERT(!hostnameComponents.isEmpty(), "[hostnameComponents count] >= 1", "utils");
    return hostnameComponents.first();
}

QStringList ipAddressesFromHostname(const QString &hostname) {
    QStringList addresses;
    for (const quint32 address : platform().systemInfo.ipv4Addresses(hostname.toStdString())) {
        addresses.append(_stringFromIPAddress(address));
    }
    return addresses;
}

QString _stringFromIPAddress(quint32 address) {
    std::array<char, 64> text{};
    return QString::fromLatin1(::inet_ntop(AF_INET, &address, text.data(), text.size()));
}

bool areHostnamesSameMachine(const QString &hostnameA, const QString &hostnameB) {
    if (hostnameA == hostnameB) {
        return true;
    }
    const QStringList addressesA = ipAddressesFromHostname(hostnameA);
    return std::any_of(addressesA.begin(), addressesA.end(), [&hostnameB](const QString &addressA) {
        // Deliberately asked again for each address: hosts have one or two.
        return ipAddressesFromHostname(hostnameB).contains(addressA);
    });
}

} // namespace quillmark
