#pragma once

#include <functional>
#include <vector>

namespace quillmark {

/// A descriptor that is waited for, and what is done whenever it has something to be read.
struct Input {
    int descriptor;
    /// \returns false when there will be no more.
    std::function<bool()> onReadable;
};

/// Serves the inputs until each has come to its end. They are all that the calling thread waits for.
void serveAlone(std::vector<Input> inputs);

} // namespace quillmark
