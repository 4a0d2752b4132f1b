#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quillmark {

/// Tells of something that a backend could not do although nobody asked for its result. Any thread may.
void reportProblem(const std::string &sentence);

/// Sends what is reported to the log, which stands above this folder. Before that, reports are dropped.
void setProblemReporter(void (*report)(const std::string &sentence));

/// Makes the call. What it reports on this thread is not told, but handed back, in order: for what is done in advance,
/// and may never be wanted.
std::vector<std::string> problemsOf(const std::function<void()> &call);

} // namespace quillmark
