#pragma once

#include "platform/QtText.h"

#include <concepts>
#include <string>
#include <string_view>

namespace quillmark {

// Paths as texts. A slash at the end of a path, and one beside another, mean nothing.

/// The path with none of these: "/a/b" of "/a//b/"; "/" stays.
std::string withoutNeedlessSlashes(std::string_view path);

/// What stands behind a path's last slash: "c" of "/a/b/c" and of "/a/b/c/"; "/" of the root.
std::string lastPathComponent(std::string_view path);

/// What stands before it: "/a/b" of "/a/b/c"; "/" for what lies in the root, an empty text for a single name.
std::string deletingLastPathComponent(std::string_view path);

/// A name, or a path, in a folder; in the current one when the folder is an empty text.
std::string appendingPathComponent(std::string_view folder, std::string_view name);

// The same for Qt's texts.
template <std::same_as<QString> Text>
Text withoutNeedlessSlashes(const Text &path) {
    return qtText(withoutNeedlessSlashes(path.toStdString()));
}
template <std::same_as<QString> Text>
Text lastPathComponent(const Text &path) {
    return qtText(lastPathComponent(path.toStdString()));
}
template <std::same_as<QString> Text>
Text deletingLastPathComponent(const Text &path) {
    return qtText(deletingLastPathComponent(path.toStdString()));
}
template <std::same_as<QString> Text>
Text appendingPathComponent(const Text &folder, const Text &name) {
    return qtText(appendingPathComponent(folder.toStdString(), name.toStdString()));
}

} // namespace quillmark
