#pragma once

#include <optional>
#include <string>

namespace quillmark {

class Tasks;

/// The version that a helper tool prints when it is run without arguments: what follows the last "Limited " in its
/// output, or the whole output when that is not in it; 1 MiB of it at most. Absent when the output is no UTF-8.
///
/// Waits for the tool without limit, and keeps little of its output however much there is. Raises an exception when the
/// tool can't be started.
std::optional<std::string> versionPrintedBy(const std::string &path, Tasks &tasks);

} // namespace quillmark
