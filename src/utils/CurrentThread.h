#pragma once

#include <QString>
#include <QtGlobal>
#include <string>

namespace quillmark {

/// The calling thread's number in the system's own count; the one that log lines of unnamed threads show.
quint32 currentThreadId();

/// Names the calling thread, for log lines and for the system's tools. An empty name is a name; a null one takes the
/// name away.
void setCurrentThreadName(const QString &name);

/// How log lines name the calling thread: "[NAME] ", or "[0xNUMBER] " without a name, as UTF-8.
const std::string &currentThreadLogPrefix();

} // namespace quillmark
