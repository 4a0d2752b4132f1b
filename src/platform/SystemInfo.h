#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>
#include <string>

namespace quillmark {

/// Facts about this process and the system that it runs on.
class SystemInfo {
public:
    virtual ~SystemInfo() = default;

    virtual qint32 processIdentifier() const = 0;
    /// The base name of this process's executable.
    virtual QString processName() const = 0;
    /// The calling thread's number in the system's own count.
    virtual quint32 currentThreadNumber() const = 0;
    /// True while a debugger or another tracer is attached to this process.
    virtual bool isTraced() const = 0;
    /// The system's text for an error number, or nothing when it has none.
    virtual std::optional<QString> posixErrorText(int error) const = 0;
};

} // namespace quillmark
