#pragma once

#include "platform/process/Descriptor.h"

#include <string_view>

namespace quillmark {

/// Writes all the bytes to an open file. \returns false, with `errno`, when that can't be.
inline bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = uninterrupted([&] { return ::write(file, bytes.data(), bytes.size()); });
        if (count < 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<size_t>(count));
    }
    return true;
}

} // namespace quillmark
