#include "platform/linux/desktop/UserDirectories.h"

#include "platform/files/HomeFolder.h"
#include "platform/files/ReadFile.h"
#include "platform/values/Pieces.h"

#include <string_view>

namespace quillmark {

namespace {

/// The value as a path: without its quotation marks, a leading $HOME replaced, and without a slash at its end.
std::string pathIn(std::string_view value) {
    constexpr std::string_view kHome = "$HOME";
    if (value.size() > 2 && value.starts_with('"') && value.ends_with('"')) {
        value = value.substr(1, value.size() - 2);
    }
    std::string path = value.starts_with(kHome) ? homeFolder().append(value.substr(kHome.size())) : std::string(value);
    if (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path;
}

} // namespace

std::optional<std::string> downloadsFolderOfDesktop() {
    constexpr std::string_view kBeginning = "XDG_DOWNLOAD_DIR=";
    constexpr std::int64_t kLargest = 1 << 20; // bytes
    const auto contents = readRegularFile(folderOfDesktop("XDG_CONFIG_HOME", ".config") + "/user-dirs.dirs", kLargest);
    std::optional<std::string> folder; // of several lines the last one counts
    if (const auto *text = std::get_if<std::string>(&contents)) {
        for (const std::string_view line : pieces(*text, '\n')) {
            if (line.starts_with(kBeginning)) {
                folder = pathIn(line.substr(kBeginning.size()));
            }
        }
    }
    return folder;
}

} // namespace quillmark
