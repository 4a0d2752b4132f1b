#pragma once

#include "platform/Scripts.h"

namespace quillmark {

/// There is no script language that the desktop's applications understand: no script has a result.
class LinuxScripts final : public Scripts {
public:
    std::unique_ptr<Script> scriptWithSource(const QString &source) override;
};

} // namespace quillmark
