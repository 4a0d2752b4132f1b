#include "platform/linux/desktop/LinuxWorkspace.h"

#include "platform/PropertyList.h"
#include "platform/files/BundleSearch.h"
#include "platform/files/FolderEntries.h"
#include "platform/files/HomeFolder.h"
#include "platform/files/LockFile.h"
#include "platform/files/Path.h"
#include "platform/files/Tree.h"
#include "platform/linux/desktop/SessionBus.h"
#include "platform/linux/desktop/Trash.h"
#include "platform/linux/desktop/UserDirectories.h"
#include "platform/linux/processes/Spawn.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <unistd.h>

namespace quillmark {

namespace {

constexpr const char *kFinderPath = "/System/Library/CoreServices/Finder.app"; // where it is on a Mac

/// Starts a program that has nothing in common with this process but its user and its environment. \returns its
/// process's number, or 0.
pid_t spawnDetached(const std::vector<std::string> &command) {
    Spawn spawn;
    spawn.separate();
    pid_t process = 0;
    return spawn.start(command, environ, &process) == 0 ? process : 0;
}

std::vector<int> processNumbers() {
    std::vector<int> numbers;
    FolderEntries("/proc").all([&numbers](std::string_view name, unsigned char /*type*/) {
        int number = 0;
        const auto [end, error] = std::from_chars(name.begin(), name.end(), number);
        if (error == std::errc() && end == name.end()) {
            numbers.push_back(number);
        }
        return true;
    });
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

/// An empty text when the process has ended or may not be looked at.
std::string executableOfProcess(int process) {
    constexpr std::string_view kDeleted = " (deleted)";
    std::error_code error;
    std::string path = std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/exe", error);
    // An update took the file's place; but a file may be called like this, too.
    if (path.ends_with(kDeleted) && ::access(path.c_str(), F_OK) != 0) {
        path.erase(path.size() - kDeleted.size());
    }
    return path;
}

/// The bundle whose Contents/MacOS folder holds the executable.
std::optional<std::string> bundleOf(const std::string &executable) {
    constexpr std::string_view kPrograms = "/Contents/MacOS";
    std::string folder = deletingLastPathComponent(executable);
    if (!folder.ends_with(kPrograms)) {
        return std::nullopt;
    }
    folder.erase(folder.size() - kPrograms.size());
    return folder.ends_with(".app") ? std::optional(folder) : std::nullopt;
}

/// Starts a program unless the process that the file names still runs it, and notes the new one there. To look through
/// all processes takes as long as the rest of a usual start.
bool startOnce(const std::string &executable, const Descriptor &file) {
    pid_t process = 0;
    if (::pread(file.get(), &process, sizeof process, 0) == sizeof process &&
        executableOfProcess(process) == executable) {
        return true;
    }
    process = spawnDetached({executable});
    [[maybe_unused]] const ssize_t noted = ::pwrite(file.get(), &process, sizeof process, 0);
    return process != 0;
}

} // namespace

std::vector<std::string> LinuxWorkspace::applicationsFolders(Domain domain) const {
    const std::string local = "/Applications";
    const std::string users = appendingPathComponent(homeFolder(), local);
    if (domain == Domain::All) {
        return {users, local};
    }
    return {domain == Domain::User ? users : local};
}

/// The one that the desktop goes by and the one that everybody knows. A desktop that has none names the home folder.
std::vector<std::string> LinuxWorkspace::downloadsFolders() const {
    const std::string usual = appendingPathComponent(homeFolder(), "Downloads");
    const auto desktops = downloadsFolderOfDesktop();
    const bool hasOwn = desktops && !desktops->empty() && *desktops != homeFolder() && *desktops != usual;
    return hasOwn ? std::vector{*desktops, usual} : std::vector{usual};
}

/// A Mac's, and those of the desktops.
std::vector<std::string> LinuxWorkspace::volumesFolders() const { return {"/Volumes/", "/media/", "/run/media/"}; }

std::vector<Dictionary> LinuxWorkspace::launchedApplications() const {
    const auto recordOf = [](const std::string &identifier, const std::string &bundle, int process) {
        Dictionary record{{kApplicationPath, bundle}, {kApplicationProcessIdentifier, process}};
        if (!identifier.empty()) {
            record.insert_or_assign(kApplicationBundleIdentifier, identifier);
        }
        return record;
    };
    const std::optional<int> fileManager = m_sessionBus.processOwning(kFileManagerName);
    std::vector<Dictionary> records;
    for (const int process : processNumbers()) {
        if (process == fileManager) {
            records.push_back(recordOf(kFinderIdentifier, kFinderPath, process));
            continue;
        }
        const std::string executable = executableOfProcess(process);
        const auto bundle = bundleOf(executable);
        if (!bundle || executableOf(*bundle) != executable) {
            continue;
        }
        const Dictionary information = m_propertyList.readDictionary(*bundle + "/Contents/Info.plist");
        records.push_back(recordOf(valueOf(information, "CFBundleIdentifier").text().value_or(""), *bundle, process));
    }
    return records;
}

std::optional<std::string> LinuxWorkspace::bundleWithIdentifier(const std::string &bundleIdentifier) const {
    if (bundleIdentifier == kFinderIdentifier) {
        return kFinderPath;
    }
    std::optional<std::vector<std::string>> paths;
    for (const std::string &folder : applicationsFolders(Domain::All)) {
        pathsForIdent(bundleIdentifier, folder, &paths, m_propertyList);
    }
    return paths ? std::optional(paths->front()) : std::nullopt;
}

bool LinuxWorkspace::launchApplication(const std::string &path) {
    if (path == kFinderPath) {
        return true;
    }
    const std::string executable = executableOf(path);
    if (!executable.starts_with('/')) {
        return false;
    }
    if (!bundleOf(executable)) {
        return spawnDetached({executable}) != 0;
    }
    // The lock lets one of several launch it. Where there can be none, it is launched all the same.
    const std::string folder = appendingPathComponent(homeFolder(), "Library/Caches/Quillmark");
    makeFolders(folder);
    return startOnce(executable, lockedFile(folder + '/' + lastPathComponent(executable) + ".process", m_clock));
}

bool LinuxWorkspace::openFolder(const std::string &path) { return spawnDetached({"/usr/bin/xdg-open", path}) != 0; }

bool LinuxWorkspace::recycle(const std::string &name, const std::string &folder) { return moveToTrash(name, folder); }

/// A bundle's executable is the one that its Info.plist names, else the one named as the bundle.
std::string LinuxWorkspace::executableOf(const std::string &path) const {
    constexpr std::string_view kEnding = ".app";
    if (!path.ends_with(kEnding)) {
        return path;
    }
    const Dictionary information = m_propertyList.readDictionary(path + "/Contents/Info.plist");
    std::string name = valueOf(information, "CFBundleExecutable").text().value_or("");
    if (name.empty()) {
        name = lastPathComponent(path);
        name.erase(name.size() - kEnding.size());
    }
    return path + "/Contents/MacOS/" + name;
}

} // namespace quillmark
