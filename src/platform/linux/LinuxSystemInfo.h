#pragma once

#include "platform/SystemInfo.h"

namespace quillmark {

class LinuxSystemInfo final : public SystemInfo {
public:
    qint32 processIdentifier() const override;
    QString processName() const override;
    quint32 currentThreadNumber() const override;
    bool isTraced() const override;
    std::optional<QString> posixErrorText(int error) const override;
};

} // namespace quillmark
