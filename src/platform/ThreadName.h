#pragma once

#include <QString>

namespace quillmark {

/// The calling thread's name; null when it has none. An empty name is one.
QString currentThreadName();

/// Names the calling thread, for the log and for the system's tools, which show no more than 15 bytes of it. A null
/// name takes the name away.
void nameCurrentThread(const QString &name);

} // namespace quillmark
