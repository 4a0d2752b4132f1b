#include "platform/linux/Trash.h"

#include "platform/Descriptor.h"
#include "platform/HomeFolder.h"
#include "platform/Problem.h"
#include "platform/Tree.h"

#include <QFile>
#include <QUuid>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmark {

namespace {

struct Item {
    QByteArray name;
    QByteArray folder; ///< without links in it; empty for the root
    Descriptor opened; ///< the folder
    dev_t device;      ///< its file system

    QByteArray path() const { return pathOf(name); }
    QByteArray pathOf(const QByteArray &other) const { return folder + '/' + other; }
};

/// A trash folder of the user's own, made when it is not there yet.
struct Trash {
    QByteArray path;
    qsizetype untold; ///< bytes of an item's path that go without saying: those of the trash's own file system
    Descriptor infos; ///< where each item came from
    Descriptor files; ///< the items
};

std::optional<struct stat> statusOf(const Descriptor &file) {
    struct stat status {};
    return file.isOpen() && ::fstat(file.get(), &status) == 0 ? std::optional(status) : std::nullopt;
}

/// The user's own folder of that name, made when it is not there; not open when it is somebody else's, or a link.
Descriptor ownFolder(int folder, const QByteArray &name, int further = O_NOFOLLOW) {
    ::mkdirat(folder, name.constData(), S_IRWXU);
    Descriptor opened(::openat(folder, name.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC | further));
    const auto status = statusOf(opened);
    return status && status->st_uid == ::geteuid() ? std::move(opened) : Descriptor();
}

std::optional<Trash> openedTrash(const QByteArray &path, qsizetype untold, const Descriptor &trash) {
    if (!trash.isOpen()) {
        return std::nullopt;
    }
    Trash opened{path, untold, ownFolder(trash.get(), "info"), ownFolder(trash.get(), "files")};
    return opened.infos.isOpen() && opened.files.isOpen() ? std::optional(std::move(opened)) : std::nullopt;
}

/// The user may have led this one to another disk by a link.
std::optional<Trash> homeTrash() {
    QByteArray data = qgetenv("XDG_DATA_HOME");
    if (!data.startsWith('/')) {
        data = QFile::encodeName(homeFolder()) + "/.local/share";
    }
    std::error_code ignored; // it shows below
    std::filesystem::create_directories(data.constData(), ignored);
    const QByteArray path = data + "/Trash";
    return openedTrash(path, 0, ownFolder(AT_FDCWD, path, 0));
}

/// The highest folder above the item on the same file system; empty for the root.
QByteArray topFolderOf(const Item &item) {
    QByteArray top = item.folder;
    while (!top.isEmpty()) {
        const QByteArray above = top.left(top.lastIndexOf('/'));
        struct stat status {};
        if (::stat((above + '/').constData(), &status) != 0 || status.st_dev != item.device) {
            break;
        }
        top = above;
    }
    return top;
}

/// The trash that the administrator lets all users have on a file system; the sticky bit keeps them apart.
std::optional<Trash> sharedTrash(const QByteArray &top) {
    const QByteArray user = QByteArray::number(::geteuid());
    const Descriptor shared(::open((top + "/.Trash").constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const auto status = statusOf(shared);
    if (!status || (status->st_mode & S_ISVTX) == 0) {
        return std::nullopt;
    }
    return openedTrash(top + "/.Trash/" + user, top.size() + 1, ownFolder(shared.get(), user));
}

std::optional<Trash> usersTrash(const QByteArray &top) {
    const QByteArray path = top + "/.Trash-" + QByteArray::number(::geteuid());
    return openedTrash(path, top.size() + 1, ownFolder(AT_FDCWD, path));
}

QByteArray infoOf(const Item &item, const Trash &trash) {
    const time_t now = ::time(nullptr);
    tm local{};
    ::localtime_r(&now, &local);
    std::array<char, 32> date{};
    ::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + item.path().mid(trash.untold).toPercentEncoding("/") +
           "\nDeletionDate=" + date.data() + '\n';
}

QByteArray infoName(const QByteArray &name) { return name + ".trashinfo"; }

/// The name, as often as that is taken with a number behind it, so short that its info file can have it too.
QByteArray numberedName(const QByteArray &name, int number) {
    const QByteArray ending = number == 1 ? QByteArray() : '.' + QByteArray::number(number);
    qsizetype size = qMin(name.size(), NAME_MAX - infoName(ending).size());
    const auto isWithinCharacter = [&] { return (static_cast<unsigned char>(name[size]) & 0xC0U) == 0x80U; };
    while (size > 0 && size < name.size() && isWithinCharacter()) {
        --size;
    }
    return name.left(size) + ending;
}

/// Writes the bytes, to the disk and not only to the system's memory. \returns false when that was not possible.
bool isWritten(const Descriptor &file, const QByteArray &bytes) {
    return ::write(file.get(), bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size() &&
           ::fsync(file.get()) == 0;
}

/// Writes the info file of an item that is to come, which takes a name for it. \returns that name; empty on failure.
QByteArray reservedName(const Item &item, const Trash &trash) {
    for (int number = 1;; ++number) {
        QByteArray name = numberedName(item.name, number);
        if (::faccessat(trash.files.get(), name.constData(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
            continue; // something that nobody knows the origin of
        }
        const Descriptor info(
            ::openat(trash.infos.get(), infoName(name).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (info.isOpen()) {
            if (isWritten(info, infoOf(item, trash))) {
                return name;
            }
            ::unlinkat(trash.infos.get(), infoName(name).constData(), 0);
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
    const QByteArray name = reservedName(item, trash);
    if (name.isEmpty()) {
        return EXDEV;
    }
    const int error = move(name);
    if (error != 0) {
        ::unlinkat(trash.infos.get(), infoName(name).constData(), 0);
    }
    return error;
}

int renameInto(const Trash &trash, const Item &item) {
    return putInto(trash, item, [&](const QByteArray &name) {
        return ::renameat(item.opened.get(), item.name.constData(), trash.files.get(), name.constData()) == 0 ? 0
                                                                                                              : errno;
    });
}

/// The item itself goes at once, by another name; no one ever sees half of it.
int copyInto(const Trash &trash, const Item &item) {
    if (::faccessat(item.opened.get(), ".", W_OK | X_OK, AT_EACCESS) != 0 || !isTreeRemovable(item.path())) {
        return EACCES;
    }
    return putInto(trash, item, [&](const QByteArray &name) {
        const QByteArray copy = trash.path + "/files/" + name;
        if (const auto failure = copyTree(item.path(), copy)) {
            return failure->error;
        }
        const QByteArray leaving = ".trashed-" + QUuid::createUuid().toByteArray(QUuid::WithoutBraces);
        if (::renameat(item.opened.get(), item.name.constData(), item.opened.get(), leaving.constData()) != 0) {
            const int error = errno;
            removeTree(copy);
            return error;
        }
        if (const int error = removeTree(item.pathOf(leaving)); error != 0) {
            reportProblem(QStringLiteral("\"%1\", of which a copy is in the Trash, can't be removed: %2")
                              .arg(QFile::decodeName(item.pathOf(leaving)), qt_error_string(error)));
        }
        return 0;
    });
}

std::optional<Item> itemAt(const QByteArray &name, const QByteArray &folder) {
    std::array<char, PATH_MAX> path{};
    if (name.isEmpty() || name == "." || name == ".." || name.contains('/') ||
        ::realpath(folder.constData(), path.data()) == nullptr) {
        return std::nullopt;
    }
    Descriptor opened(::open(path.data(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const auto status = statusOf(opened);
    if (!status || ::faccessat(opened.get(), name.constData(), F_OK, AT_SYMLINK_NOFOLLOW) != 0) {
        return std::nullopt;
    }
    return Item{name, path[1] == '\0' ? "" : path.data(), std::move(opened), status->st_dev};
}

} // namespace

bool moveToTrash(const QByteArray &name, const QByteArray &folder) {
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
        const QByteArray top = topFolderOf(*item);
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
