#pragma once

#include "platform/Scripts.h"

namespace quillmark {

/// There is no script language that the desktop's applications understand: no script has a result.
class LinuxScripts final : public Scripts {
public:
    std::unique_ptr<Script> scriptWithSource(const std::string & /*source*/) override {
        return std::make_unique<NoScript>();
    }

private:
    class NoScript final : public Script {
    public:
        bool compile() override { return false; }
        std::optional<ScriptDescriptor> execute() override { return std::nullopt; }
    };
};

} // namespace quillmark
