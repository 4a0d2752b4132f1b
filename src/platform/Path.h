#pragma once

#include <QString>

namespace quillmark {

// Paths as texts. A slash at the end of a path, and one beside another, mean nothing.

/// The path with none of these: "/a/b" of "/a//b/"; "/" stays.
QString withoutNeedlessSlashes(const QString &path);

/// What stands behind a path's last slash: "c" of "/a/b/c" and of "/a/b/c/"; "/" of the root.
QString lastPathComponent(const QString &path);

/// What stands before it: "/a/b" of "/a/b/c"; "/" for what lies in the root, an empty text for a single name.
QString deletingLastPathComponent(const QString &path);

/// A name, or a path, in a folder; in the current one when the folder is an empty text.
QString appendingPathComponent(const QString &folder, const QString &name);

} // namespace quillmark
