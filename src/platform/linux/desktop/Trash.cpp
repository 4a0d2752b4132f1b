#include "platform/linux/desktop/Trash.h"

#include "platform/files/HomeFolder.h"
#include "platform/files/Tree.h"
#include "platform/files/TreeCopy.h"
#include "platform/files/WriteAll.h"
#include "platform/process/Descriptor.h"
#include "platform/process/Problem.h"

#include <array>
#include <cerrno>
#include <climits>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <random>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace quillmark {

namespace {

struct Item {
    std::string name;
    std::string folder; ///< without links in it; empty for the root
    Descriptor opened;  ///< the folder
    dev_t device;       ///< its file system

    std::string path() const { return pathOf(name); }
    std::string pathOf(const std::string &other) const { return folder + '/' + other; }
};

/// A trash folder of the user's own, made when it is not there yet.
struct Trash {
    std::string path;
    size_t untold;    ///< bytes that are left out of an item's path: those that lead to the trash's own file system
    Descriptor infos; ///< where each item came from
    Descriptor files; ///< the items
};

std::optional<struct stat> statusOf(const Descriptor &file) {
    struct stat status {};
    return file.isOpen() && ::fstat(file.get(), &status) == 0 ? std::optional(status) : std::nullopt;
}

/// The user's own folder of that name, made when it is not there; not open when it is somebody else's, or a link.
Descriptor ownFolder(int folder, const std::string &name, int further = O_NOFOLLOW) {
    ::mkdirat(folder, name.c_str(), S_IRWXU);
    Descriptor opened(::openat(folder, name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC | further));
    const auto status = statusOf(opened);
    return status && status->st_uid == ::geteuid() ? std::move(opened) : Descriptor();
}

std::optional<Trash> openedTrash(const std::string &path, size_t untold, const Descriptor &trash) {
    if (!trash.isOpen()) {
        return std::nullopt;
    }
    Trash opened{path, untold, ownFolder(trash.get(), "info"), ownFolder(trash.get(), "files")};
    return opened.infos.isOpen() && opened.files.isOpen() ? std::optional(std::move(opened)) : std::nullopt;
}

/// The user may have led this one to another disk by a link.
std::optional<Trash> homeTrash() {
    const std::string data = folderOfDesktop("XDG_DATA_HOME", ".local/share");
    makeFolders(data);
    const std::string path = data + "/Trash";
    return openedTrash(path, 0, ownFolder(AT_FDCWD, path, 0));
}

/// The highest folder above the item on the same file system; empty for the root.
std::string topFolderOf(const Item &item) {
    std::string top = item.folder;
    while (!top.empty()) {
        const std::string above = top.substr(0, top.rfind('/'));
        struct stat status {};
        if (::stat((above + '/').c_str(), &status) != 0 || status.st_dev != item.device) {
            break;
        }
        top = above;
    }
    return top;
}

/// The trash that the administrator lets all users have on a file system; the sticky bit keeps them apart.
std::optional<Trash> sharedTrash(const std::string &top) {
    const std::string user = std::to_string(::geteuid());
    const Descriptor shared(::open((top + "/.Trash").c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const auto status = statusOf(shared);
    if (!status || (status->st_mode & S_ISVTX) == 0) {
        return std::nullopt;
    }
    return openedTrash(top + "/.Trash/" + user, top.size() + 1, ownFolder(shared.get(), user));
}

std::optional<Trash> usersTrash(const std::string &top) {
    const std::string path = top + "/.Trash-" + std::to_string(::geteuid());
    return openedTrash(path, top.size() + 1, ownFolder(AT_FDCWD, path));
}

/// With a percent sign and the number for each byte that is neither a letter, a digit nor one of "-._~/".
std::string percentEncoded(const std::string &path) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string text;
    for (const char character : path) {
        if (kPlain.find(character) != std::string_view::npos) {
            text += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            text += {'%', kDigits[byte / 16], kDigits[byte % 16]};
        }
    }
    return text;
}

std::string infoOf(const Item &item, const Trash &trash) {
    const time_t now = ::time(nullptr);
    tm local{};
    ::localtime_r(&now, &local);
    std::array<char, 32> date{};
    ::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + percentEncoded(item.path().substr(trash.untold)) + "\nDeletionDate=" + date.data() +
           '\n';
}

std::string infoName(const std::string &name) { return name + ".trashinfo"; }

/// The name, as often as that is taken with a number behind it, so short that its info file can have it too.
std::string numberedName(const std::string &name, int number) {
    const std::string ending = number == 1 ? "" : '.' + std::to_string(number);
    size_t size = std::min(name.size(), size_t{NAME_MAX} - infoName(ending).size());
    const auto isWithinCharacter = [&] { return (static_cast<unsigned char>(name[size]) & 0xC0U) == 0x80U; };
    while (size > 0 && size < name.size() && isWithinCharacter()) {
        --size;
    }
    return name.substr(0, size) + ending;
}

/// Writes the info file of an item that is to come, which takes a name for it. \returns that name; empty on failure.
std::string reservedName(const Item &item, const Trash &trash) {
    for (int number = 1;; ++number) {
        std::string name = numberedName(item.name, number);
        if (::faccessat(trash.files.get(), name.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
            continue; // something that nobody knows the origin of
        }
        const Descriptor info(
            ::openat(trash.infos.get(), infoName(name).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (info.isOpen()) {
            if (writeAll(info.get(), infoOf(item, trash)) && ::fsync(info.get()) == 0) {
                return name;
            }
            ::unlinkat(trash.infos.get(), infoName(name).c_str(), 0);
            return {};
        }
        if (errno != EEXIST) {
            return {};
        }
    }
}

/// Lets `move` bring the item to its place in the trash. \returns 0, or an `errno`; then there is nothing in the trash.
/// EXDEV is that of a trash that can't take it.
template <typename Move>
int putInto(const Trash &trash, const Item &item, const Move &move) {
    const std::string name = reservedName(item, trash);
    if (name.empty()) {
        return EXDEV;
    }
    const int error = move(name);
    if (error != 0) {
        ::unlinkat(trash.infos.get(), infoName(name).c_str(), 0);
    }
    return error;
}

int renameInto(const Trash &trash, const Item &item) {
    return putInto(trash, item, [&](const std::string &name) {
        return ::renameat(item.opened.get(), item.name.c_str(), trash.files.get(), name.c_str()) == 0 ? 0 : errno;
    });
}

/// The item itself goes at once, by another name; no one ever sees half of it.
int copyInto(const Trash &trash, const Item &item) {
    if (::faccessat(item.opened.get(), ".", W_OK | X_OK, AT_EACCESS) != 0 || !isTreeRemovable(item.path())) {
        return EACCES;
    }
    return putInto(trash, item, [&](const std::string &name) {
        const std::string copy = trash.path + "/files/" + name;
        if (const auto failure = copyTree(item.path(), copy)) {
            return failure->error;
        }
        const std::string leaving =
            ".trashed-" + std::to_string(std::random_device()()) + std::to_string(std::random_device()());
        if (::renameat(item.opened.get(), item.name.c_str(), item.opened.get(), leaving.c_str()) != 0) {
            const int error = errno;
            removeUnlockedTree(copy);
            return error;
        }
        if (const int error = removeUnlockedTree(item.pathOf(leaving)); error != 0) {
            reportProblem('"' + item.pathOf(leaving) + "\", of which a copy is in the Trash, can't be removed: " +
                          std::generic_category().message(error));
        }
        return 0;
    });
}

std::optional<Item> itemAt(const std::string &name, const std::string &folder) {
    std::error_code error;
    const std::string path = std::filesystem::canonical(folder, error);
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos || path.empty()) {
        return std::nullopt;
    }
    Descriptor opened(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const auto status = statusOf(opened);
    if (!status || ::faccessat(opened.get(), name.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) != 0) {
        return std::nullopt;
    }
    return Item{name, path == "/" ? "" : path, std::move(opened), status->st_dev};
}

} // namespace

bool moveToTrash(const std::string &name, const std::string &folder) {
    const auto item = itemAt(name, folder);
    const auto home = item ? homeTrash() : std::nullopt;
    const auto homeStatus = home ? statusOf(home->files) : std::nullopt;
    if (!homeStatus) {
        return false;
    }
    int error = EXDEV;
    if (homeStatus->st_dev == item->device) {
        error = renameInto(*home, *item);
    } else {
        const std::string top = topFolderOf(*item);
        for (const auto trashOf : {sharedTrash, usersTrash}) {
            const auto trash = error == EXDEV ? trashOf(top) : std::nullopt;
            error = trash ? renameInto(*trash, *item) : error;
        }
    }
    if (error == EXDEV) { // no trash of its own file system takes it
        error = copyInto(*home, *item);
    }
    return error == 0;
}

} // namespace quillmark
