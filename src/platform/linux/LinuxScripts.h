#pragma once

#include "platform/Scripts.h"

#include <string>

namespace quillmark {

/// There is no script language that the desktop's applications understand: no script has a result.
class LinuxScripts final : public Scripts {
public:
    std::unique_ptr<Script> scriptWithSource(const std::string &source) override;
};

} // namespace quillmark
