#pragma once

class QString;

namespace quillmark {

/// Tells of something that a backend could not do although nobody asked for its result. Any thread may.
void reportProblem(const QString &sentence);

/// Sends what is reported to the log, which stands above this folder. Before that, reports are dropped.
void setProblemReporter(void (*report)(const QString &sentence));

} // namespace quillmark
