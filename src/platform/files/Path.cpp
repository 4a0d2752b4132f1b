#include "platform/files/Path.h"

#include <algorithm>
#include <filesystem>

namespace quillmark {

std::string withoutEndingSlashes(std::string_view path) {
    return std::string(path.substr(0, std::max<size_t>(path.find_last_not_of('/') + 1, 1)));
}

std::string withoutNeedlessSlashes(std::string_view path) {
    std::string result;
    result.reserve(path.size());
    for (const char character : path) {
        if (character != '/' || !result.ends_with('/')) {
            result += character;
        }
    }
    if (result.size() > 1 && result.ends_with('/')) {
        result.pop_back();
    }
    return result;
}

std::string normalPath(const std::string &path) {
    return withoutNeedlessSlashes(std::filesystem::path(path).lexically_normal().native());
}

std::string lastPathComponent(std::string_view path) {
    const std::string plain = withoutNeedlessSlashes(path);
    return plain == "/" ? plain : plain.substr(plain.rfind('/') + 1);
}

std::string deletingLastPathComponent(std::string_view path) {
    const std::string plain = withoutNeedlessSlashes(path);
    const size_t slash = plain.rfind('/');
    if (slash == std::string::npos) {
        return {};
    }
    return slash == 0 ? "/" : plain.substr(0, slash);
}

std::string appendingPathComponent(std::string_view folder, std::string_view name) {
    if (folder.empty()) {
        return withoutNeedlessSlashes(name);
    }
    return withoutNeedlessSlashes(std::string(folder).append(1, '/').append(name));
}

} // namespace quillmark
