#pragma once

#include <string>
#include <string_view>

namespace quillmark {

// Paths as texts. A slash at the end of a path, and one beside another, mean nothing.

/// The path without those at its end.
std::string withoutEndingSlashes(std::string_view path);

/// The path with none of these: "/a/b" of "/a//b/"; "/" stays.
std::string withoutNeedlessSlashes(std::string_view path);

/// The same without "." and without ".." and the name before it, whatever is on the disk: "/a/c" of "/a/./b/../c".
std::string normalPath(const std::string &path);

/// What stands behind a path's last slash: "c" of "/a/b/c" and of "/a/b/c/"; "/" of the root.
std::string lastPathComponent(std::string_view path);

/// What stands before it: "/a/b" of "/a/b/c"; "/" for what lies in the root, an empty text for a single name.
std::string deletingLastPathComponent(std::string_view path);

/// A name, or a path, in a folder; in the current one when the folder is an empty text.
std::string appendingPathComponent(std::string_view folder, std::string_view name);

} // namespace quillmark
