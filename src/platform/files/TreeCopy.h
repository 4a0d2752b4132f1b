#pragma once

#include <optional>
#include <string>

namespace quillmark {

/// What stopped a copy: the file at fault, of the source or of the target, and an `errno`.
struct CopyFailure {
    std::string path;
    int error;
};

/// Copies an item to a place where there is nothing yet: contents with their holes, links (hard ones inside the item,
/// too), pipes, sockets and devices as such, modes, times, and owners and extended attributes as far as the user may
/// and the target's file system can; nobody else's file becomes a set-id one. \returns what stopped it: then there is
/// nothing new at the target.
std::optional<CopyFailure> copyTree(const std::string &source, const std::string &target);

} // namespace quillmark
