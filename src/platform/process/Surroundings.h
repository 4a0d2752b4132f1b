#pragma once

namespace quillmark {

/// Lets nothing count that a process inherits from the one that started it: signals, timers, limits, its share of the
/// processors, its group of processes that can be stopped together. For processes of the administrator's, and what they
/// start. Afterwards every signal is blocked. What the system does not let go of stays, and no step relies on it.
void leaveSurroundings();

/// Gives up all of the administrator's rights but those over files and identities, for good.
void giveUpCapabilities();

} // namespace quillmark
