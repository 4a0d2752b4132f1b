#pragma once

#include <cstdlib>
#include <string>

namespace quillmark {

/// A variable of the process's environment; an empty text when it is not set.
inline std::string environmentVariable(const char *name) {
    const char *value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nobody sets one while other threads run
    return value != nullptr ? value : "";
}

} // namespace quillmark
