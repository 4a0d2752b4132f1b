#pragma once

#include "platform/Scripts.h"

#include <optional>
#include <string>

namespace quillmark {

/// The two scripts that read the Finder's selection: a list of POSIX paths. The retry brings the core application and
/// then the Finder to the front before.
class CompiledFinderScripts {
public:
    /// Makes and compiles them.
    CompiledFinderScripts(Scripts &scripts, const std::string &productName);

    /// Runs one of them on the calling thread. \returns nothing when that failed.
    std::optional<ScriptDescriptor> run(bool isRetry) { return (isRetry ? m_retry : m_selection)->execute(); }

private:
    std::unique_ptr<Scripts::Script> m_selection;
    std::unique_ptr<Scripts::Script> m_retry;
};

} // namespace quillmark
