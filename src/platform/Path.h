#pragma once

#include <QString>

namespace quillmark {

/// What stands behind a path's last slash: "c" of "/a/b/c".
inline QString lastPathComponent(const QString &path) { return path.mid(path.lastIndexOf(u'/') + 1); }

/// What stands before it, "/a/b" of "/a/b/c"; "/" for what lies in the root, an empty text without a slash.
inline QString deletingLastPathComponent(const QString &path) {
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash == 0 ? QStringLiteral("/") : path.left(slash > 0 ? slash : 0);
}

/// A name in a folder.
inline QString appendingPathComponent(const QString &folder, const QString &name) {
    return folder.isEmpty() || folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

} // namespace quillmark
