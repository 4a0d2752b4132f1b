#include "Bundles.h"

#include "Archive.h"
#include "Caller.h"
#include "Catalogue.h"
#include "Failure.h"
#include "Package.h"
#include "Payload.h"

#include <algorithm>
#include <span>
#include <sys/stat.h>

namespace updateqm {

namespace {

void requirePlace(std::span<const std::string_view> places, const std::string &path) {
    if (std::find(places.begin(), places.end(), path) == places.end()) {
        throw Failure(Status::WrongPlace, path, "is no place for this");
    }
}

void settleAndInstall(const Staging &staging, const std::string &name, Programs programs) {
    settle(staging.get(), name, programs);
    staging.install(name, name);
}

void installArchiveAt(const std::string &path, const std::string &signaturePath, const std::string &installPath) {
    const Place place = Place::of(installPath);
    const Folder folder = Folder::make(place.folder);
    const Staging staging(folder);
    const auto payload = VerifiedPayload::copy(staging, path, signaturePath);
    unpackArchive(staging, payload, place.name);
    settleAndInstall(staging, place.name, Programs::ByTheirFolder);
}

/// The client may stand in the computer's Applications folder, or wherever the caller could have put it himself.
Folder folderForClient(const std::string &path) {
    Folder folder = Folder::open(path);
    struct stat status {};
    ::fstat(folder.get(), &status);
    if (path != "/Applications" && status.st_uid != Caller::user()) {
        throw Failure(Status::WrongPlace, path, "belongs to somebody else");
    }
    return folder;
}

} // namespace

void installArchive(const std::string &path, const std::string &signaturePath, const std::string &installPath) {
    requirePlace(kArchivedBundles, installPath);
    installArchiveAt(path, signaturePath, installPath);
}

void installSystemFixes(const std::string &path, const std::string &signaturePath) {
    installArchiveAt(path, signaturePath, std::string(kSystemFixes));
}

void installPackage(const std::string &path) {
    // Its place is known only when it has been verified, so it is copied twice: first where nobody else can write.
    const Folder toolFolder = Folder::make(std::string(kToolFolder));
    toolFolder.secure();
    const Staging first(toolFolder);
    const std::string signaturePath = path + ".sig";
    const auto payload = VerifiedPayload::copy(first, path, signaturePath);
    const std::string installPath = installPathOf(payload);
    requirePlace(kPackagedBundles, installPath);

    const Place place = Place::of(installPath);
    const Folder folder = Folder::make(place.folder);
    const Staging staging(folder);
    unpackPackage(staging, payload, place.name);
    settleAndInstall(staging, place.name, Programs::ByTheirMode);
}

void installClient(const std::string &path, const std::string &signaturePath, const std::string &installPath) {
    const Place place = Place::of(installPath);
    if (place.name != kClientBundle) {
        throw Failure(Status::WrongPlace, installPath, "is not the client");
    }
    const Folder folder = folderForClient(place.folder);
    const Staging staging(folder);
    const auto payload = VerifiedPayload::copy(staging, path, signaturePath);
    if (Place::of(installPathOf(payload)).name != kClientBundle) {
        throw Failure(Status::WrongPayload, path, "is not the client");
    }
    unpackPackage(staging, payload, place.name);
    settleAndInstall(staging, place.name, Programs::ByTheirMode);
}

} // namespace updateqm
