#include "Package.h"

#include "Failure.h"
#include "Payload.h"
#include "Reader.h"

#include <fcntl.h>
#include <pugixml.hpp>
#include <sys/stat.h>
#include <unistd.h>

namespace updateqm {

namespace {

constexpr qint64 kLargestDescription = qint64{1} << 20U; // bytes
constexpr qint64 kLargestContents = qint64{1} << 30U;    // bytes, compressed

/// A member of the package's outer archive.
QByteArray memberOf(const VerifiedPayload &package, const std::string &name, qint64 largest) {
    Reader reader(package.bytes(), package.source(), [](archive *outer) { ::archive_read_support_format_xar(outer); });
    while (archive_entry *const entry = reader.next()) {
        if (pathOf(entry, package.source()) == name) {
            return reader.contents(largest);
        }
    }
    throw Failure(Status::DamagedPayload, package.source(), "holds no \"" + name + '"');
}

Reader contentsReader(const QByteArray &contents, const std::string &source) {
    return {contents, source, [](archive *inner) {
                ::archive_read_support_format_cpio(inner);
                ::archive_read_support_filter_gzip(inner);
            }};
}

/// The name of the one bundle in the package.
std::string bundleNameIn(const QByteArray &contents, const std::string &source) {
    Reader reader = contentsReader(contents, source);
    std::string bundle;
    while (archive_entry *const entry = reader.next()) {
        const std::string path = pathOf(entry, source);
        const std::string top = path.substr(0, path.find('/'));
        if (top.empty()) {
            continue;
        }
        if (!bundle.empty() && bundle != top) {
            throw Failure(Status::WrongPayload, source, "holds more than one bundle");
        }
        bundle = top;
    }
    return bundle;
}

/// A link stays inside the bundle that it is in.
bool isHarmlessLink(const std::string &path, const char *target) {
    if (target == nullptr || *target == '/' || *target == '\0') {
        return false;
    }
    auto depth = std::count(path.begin(), path.end(), '/') - 1; // folders above the link, less the bundle's own
    const std::string text = std::string(target) + '/';
    for (size_t begin = 0; begin < text.size(); begin = text.find('/', begin) + 1) {
        const std::string component = text.substr(begin, text.find('/', begin) - begin);
        depth += component == ".." ? -1 : (component.empty() || component == "." ? 0 : 1);
        if (depth < 0) {
            return false;
        }
    }
    return true;
}

/// Whatever the package says of owners and special bits does not count.
void makeHarmless(archive_entry *entry, const std::string &path, const std::string &source) {
    const auto type = ::archive_entry_filetype(entry);
    const bool isLink = type == AE_IFLNK;
    if (::archive_entry_hardlink(entry) != nullptr || (type != AE_IFREG && type != AE_IFDIR && !isLink) ||
        (isLink && !isHarmlessLink(path, ::archive_entry_symlink(entry)))) {
        throw Failure(Status::DamagedPayload, source, "holds \"" + path + "\", which is no plain file, folder or link");
    }
    constexpr mode_t kMode = 0755;
    ::archive_entry_set_perm(entry, ::archive_entry_perm(entry) & kMode);
    ::archive_entry_set_uid(entry, 0);
    ::archive_entry_set_gid(entry, 0);
}

} // namespace

std::string installPathOf(const VerifiedPayload &package) {
    const QByteArray description = memberOf(package, "PackageInfo", kLargestDescription);
    pugi::xml_document document;
    if (!document.load_buffer(description.constData(), static_cast<size_t>(description.size()))) {
        throw Failure(Status::DamagedPayload, package.source(), "has a description that can't be read");
    }
    std::string folder = document.child("pkg-info").attribute("install-location").as_string("/");
    if (!folder.ends_with('/')) {
        folder += '/';
    }
    return folder + bundleNameIn(memberOf(package, "Payload", kLargestContents), package.source());
}

void unpackPackage(const Staging &staging, const VerifiedPayload &package, const std::string &bundleName) {
    const QByteArray contents = memberOf(package, "Payload", kLargestContents);
    Reader reader = contentsReader(contents, package.source());
    const std::unique_ptr<archive, int (*)(archive *)> disk(::archive_write_disk_new(), ::archive_write_free);
    ::archive_write_disk_set_options(disk.get(), ARCHIVE_EXTRACT_PERM | ARCHIVE_EXTRACT_OWNER |
                                                     ARCHIVE_EXTRACT_SECURE_NODOTDOT | ARCHIVE_EXTRACT_SECURE_SYMLINKS |
                                                     ARCHIVE_EXTRACT_UNLINK);
    while (archive_entry *const entry = reader.next()) {
        const std::string path = pathOf(entry, package.source());
        if (path.empty()) {
            continue;
        }
        makeHarmless(entry, path, package.source());
        ::archive_entry_set_pathname(entry, path.c_str());
        if (::fchdir(staging.get()) != 0 || ::archive_read_extract2(reader.get(), entry, disk.get()) != ARCHIVE_OK) {
            throw Failure(Status::CannotWrite, package.source(), "could not be unpacked whole");
        }
    }
    if (::archive_write_close(disk.get()) != ARCHIVE_OK ||
        ::faccessat(staging.get(), bundleName.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) != 0) {
        throw Failure(Status::CannotWrite, package.source(), "could not be unpacked whole");
    }
}

} // namespace updateqm
