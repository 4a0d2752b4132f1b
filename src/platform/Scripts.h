#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmark {

/// What a script gives back.
struct ScriptDescriptor {
    enum class Type { Null, Items, Boolean, Text, Other };

    Type type = Type::Null;
    std::optional<std::string> stringValue; ///< as text; absent when it can't be one
    bool booleanValue = false;              ///< as a truth value; false when it can't be one
    std::vector<ScriptDescriptor> items;    ///< of a list, in order
};

/// Scripts that steer other applications, in the system's own script language.
class Scripts {
public:
    /// One script. It remembers that it was compiled.
    class Script {
    public:
        virtual ~Script() = default;

        /// \returns false when that can't be.
        virtual bool compile() = 0;
        /// Runs it on the calling thread, to its end; compiles it first where that was not done.
        /// \returns nothing when that failed.
        virtual std::optional<ScriptDescriptor> execute() = 0;
    };

    virtual ~Scripts() = default;

    /// A script of that source, neither compiled nor looked at. Never null.
    virtual std::unique_ptr<Script> scriptWithSource(const std::string &source) = 0;
};

} // namespace quillmark
