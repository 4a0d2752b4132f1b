#include "Permissions.h"

#include "Administration.h"
#include "InstallPlaces.h"
#include "files/Folder.h"
#include "files/PlainPath.h"
#include "process/Caller.h"
#include "process/Failure.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace updateqm {

namespace {

constexpr mode_t kCoreMode = 0755;

/// With the caller's rights, which reach nothing that is not his. By its name: who owns a folder with mode 0 can't open
/// it. \returns whether it is the caller's own.
bool repairCallers(const Folder &folder, const PlainPath &place) {
    struct stat status {};
    if (::fstatat(folder.get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISDIR(status.st_mode) ||
        status.st_uid != Caller::user()) {
        return false;
    }
    must(::fchmodat(folder.get(), place.name.c_str(), kCoreMode, 0) == 0, place.name);
    return true;
}

/// \returns whether it is the administrator's, where nobody else can have moved it to.
bool repairAdministrators(const PlainPath &place) {
    const Administration administration;
    const Folder core = Folder::openAdministrators(place.folder).inner(place.name);
    struct stat status {};
    if (::fstat(core.get(), &status) != 0 || status.st_uid != 0) {
        return false;
    }
    must(::fchmod(core.get(), kCoreMode) == 0, place.name);
    return true;
}

} // namespace

void repairCoreApplication(const std::string &path) {
    const PlainPath place = PlainPath::of(path);
    if (place.name != kCoreBundle || !place.folder.ends_with("/Contents/Resources")) {
        throw Failure(Status::WrongPlace, path, "is not the core application of a launcher");
    }
    try {
        const Folder folder = Folder::open(place.folder);
        if ((Caller::user() != 0 && repairCallers(folder, place)) || repairAdministrators(place)) {
            return;
        }
    } catch (const Failure &failure) {
        if (failure.status() == Status::CannotWrite || failure.status() == Status::Busy) {
            throw;
        }
    }
    // One answer, whatever there is: the caller learns nothing of folders that he may not look into.
    throw Failure(Status::UnsafePlace, path,
                  "is not a core application that belongs to the caller or to the administrator alone");
}

void repairKeyPairs(const std::string &path) {
    if (!path.ends_with("/.config/.mono/keypairs")) {
        throw Failure(Status::WrongPlace, path, "is not a folder of key pairs");
    }
    PlainPath::of(path);
    Caller::becomeCallerForGood();
    const Folder folder = Folder::open(path);
    must(::fchmod(folder.get(), S_IRWXU) == 0, path);
    for (const std::string &name : entriesOf(folder.get(), path)) {
        const Descriptor file(::openat(folder.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat status {};
        if (file.isOpen() && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode)) {
            must(::fchmod(file.get(), S_IRUSR | S_IWUSR) == 0, path);
        }
    }
}

} // namespace updateqm
