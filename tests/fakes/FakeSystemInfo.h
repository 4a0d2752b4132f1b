#pragma once

#include "platform/SystemInfo.h"

#include <QMap>

namespace quillmark::test {

class FakeSystemInfo final : public SystemInfo {
public:
    qint32 identifier = 311;
    QString name = QStringLiteral("Launcher");
    quint32 threadNumber = 0x1a03;
    bool traced = false;
    QMap<int, QString> errorTexts = {{2, QStringLiteral("No such file or directory")}};

    qint32 processIdentifier() const override { return identifier; }
    QString processName() const override { return name; }
    quint32 currentThreadNumber() const override { return threadNumber; }
    bool isTraced() const override { return traced; }
    std::optional<QString> posixErrorText(int error) const override {
        return errorTexts.contains(error) ? std::optional(errorTexts.value(error)) : std::nullopt;
    }
};

} // namespace quillmark::test
