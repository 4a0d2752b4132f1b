#include "Archive.h"

#include "Failure.h"
#include "Payload.h"
#include "Reader.h"
#include "integrity/UnzipManager.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace updateqm {

namespace {

bool isWhole(const Staging &staging, const std::string &path, archive_entry *entry) {
    struct stat status {};
    if (::fstatat(staging.get(), path.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return false;
    }
    const bool isFolder = ::archive_entry_filetype(entry) == AE_IFDIR;
    return isFolder ? S_ISDIR(status.st_mode)
                    : S_ISREG(status.st_mode) && status.st_size == ::archive_entry_size(entry);
}

} // namespace

void unpackArchive(const Staging &staging, const VerifiedPayload &payload, const std::string &bundleName) {
    const auto damaged = [&payload](const char *why) { return Failure(Status::DamagedPayload, payload.source(), why); };
    const auto readsZip = [](archive *reader) { ::archive_read_support_format_zip_seekable(reader); };

    // Nothing is unpacked before all names are known to be harmless.
    Reader names(payload.bytes(), payload.source(), readsZip);
    while (archive_entry *const entry = names.next()) {
        const std::string path = pathOf(entry, payload.source());
        if (path != bundleName && !path.starts_with(bundleName + '/')) {
            throw Failure(Status::WrongPayload, payload.source(), "holds something else than " + bundleName);
        }
    }
    // Archives are unpacked where they lie.
    const std::string archive = "archive";
    writeFile(staging, archive, payload.bytes(), S_IRUSR | S_IWUSR);
    if (quillmark::UnzipManager(QString::fromStdString(staging.path() + '/' + archive)).extractAll() != 0) {
        throw damaged("can't be unpacked");
    }
    Reader entries(payload.bytes(), payload.source(), readsZip);
    while (archive_entry *const entry = entries.next()) {
        if (!isWhole(staging, pathOf(entry, payload.source()), entry)) {
            throw Failure(Status::CannotWrite, payload.source(), "could not be unpacked whole");
        }
    }
    if (::faccessat(staging.get(), bundleName.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) != 0) {
        throw damaged("is empty");
    }
}

} // namespace updateqm
