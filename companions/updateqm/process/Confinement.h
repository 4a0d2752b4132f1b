#pragma once

namespace updateqm {

/// For a process that takes apart what others have made: it becomes nobody's, for good, and can do no more than compute
/// with what it has in memory, and write to one descriptor. It can open nothing, start nothing and signal nobody, has a
/// bounded time and memory, and ends with its parent. \returns the descriptor's new number; all others are closed.
int confine(int output);

} // namespace updateqm
