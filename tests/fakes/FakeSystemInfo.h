#pragma once

#include "platform/SystemInfo.h"

#include <QMap>
#include <QStringList>
#include <algorithm>

namespace quillmark::test {

class FakeSystemInfo final : public SystemInfo {
public:
    qint32 identifier = 311;
    QString name = QStringLiteral("Launcher");
    quint32 threadNumber = 0x1a03;
    bool traced = false;
    SystemVersion version = {10, 6, 8};
    std::optional<bool> intel = true;
    double appKit = 1038.36;
    QString hostName = QStringLiteral("office");
    bool hasHostName = true;
    QMap<QString, std::vector<quint32>> addresses; ///< in network byte order
    mutable QStringList lookups;                   ///< the hosts that were asked for, in order
    QMap<int, QString> errorTexts = {{2, QStringLiteral("No such file or directory")}};

    qint32 processIdentifier() const override { return identifier; }
    QString processName() const override { return name; }
    quint32 currentThreadNumber() const override { return threadNumber; }
    SystemVersion systemVersion() const override { return version; }
    std::optional<bool> isIntel() const override { return intel; }
    double appKitVersion() const override { return appKit; }
    bool readHostName(char *buffer, size_t size) const override {
        const QByteArray bytes = hostName.toUtf8().left(static_cast<qsizetype>(size));
        std::copy(bytes.begin(), bytes.end(), buffer);
        return hasHostName;
    }
    std::vector<quint32> ipv4Addresses(const QByteArray &host) const override {
        lookups << QString::fromUtf8(host);
        return addresses.value(QString::fromUtf8(host));
    }
    bool isTraced() const override { return traced; }
    std::optional<QString> posixErrorText(int error) const override {
        return errorTexts.contains(error) ? std::optional(errorTexts.value(error)) : std::nullopt;
    }
};

} // namespace quillmark::test
