#include "Permissions.h"

#include "Caller.h"
#include "Catalogue.h"
#include "Failure.h"
#include "Folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

namespace updateqm {

void repairCoreApplication(const std::string &path) {
    const Place place = Place::of(path);
    if (place.name != kCoreBundle || !place.folder.ends_with("/Contents/Resources")) {
        throw Failure(Status::WrongPlace, path, "is not the core application of a launcher");
    }
    const Folder folder = Folder::open(path);
    struct stat status {};
    if (::fstat(folder.get(), &status) != 0 || (status.st_uid != 0 && status.st_uid != Caller::user())) {
        throw Failure(Status::UnsafePlace, path, "belongs to somebody else");
    }
    constexpr mode_t kMode = 0755;
    if (::fchmod(folder.get(), kMode) != 0) {
        throw systemFailure(Status::CannotWrite, path);
    }
}

void repairKeyPairs(const std::string &path) {
    if (!path.ends_with("/.config/.mono/keypairs")) {
        throw Failure(Status::WrongPlace, path, "is no folder of key pairs");
    }
    Place::of(path);
    const Caller::Rights rights;
    const Folder folder = Folder::open(path);
    const auto must = [&path](bool isDone) {
        if (!isDone) {
            throw systemFailure(Status::CannotWrite, path);
        }
    };
    must(::fchmod(folder.get(), S_IRWXU) == 0);
    const std::unique_ptr<DIR, int (*)(DIR *)> stream(
        ::fdopendir(::openat(folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)), ::closedir);
    must(stream != nullptr);
    while (const dirent *const entry = ::readdir(stream.get())) { // NOLINT(concurrency-mt-unsafe): one thread
        const Descriptor file(::openat(folder.get(), static_cast<const char *>(entry->d_name),
                                       O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat status {};
        if (file.isOpen() && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode)) {
            must(::fchmod(file.get(), S_IRUSR | S_IWUSR) == 0);
        }
    }
}

} // namespace updateqm
