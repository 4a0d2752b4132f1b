#include "platform/linux/LinuxScripts.h"

namespace quillmark {

namespace {

class NoScript final : public Scripts::Script {
public:
    bool compile() override { return false; }
    std::optional<ScriptDescriptor> execute() override { return std::nullopt; }
};

} // namespace

std::unique_ptr<Scripts::Script> LinuxScripts::scriptWithSource(const std::string & /*source*/) {
    return std::make_unique<NoScript>();
}

} // namespace quillmark
