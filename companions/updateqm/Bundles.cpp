#include "Bundles.h"

#include "InstallPlaces.h"
#include "Tools.h"
#include "files/PlainPath.h"
#include "files/Staging.h"
#include "payload/BundleVersion.h"
#include "payload/Identity.h"
#include "payload/Payload.h"
#include "payload/Unpacking.h"
#include "process/Caller.h"
#include "process/Failure.h"

#include <algorithm>
#include <fcntl.h>
#include <span>
#include <unistd.h>

namespace updateqm {

namespace {

void requirePlace(std::span<const std::string_view> places, const std::string &path) {
    if (std::find(places.begin(), places.end(), path) == places.end()) {
        throw Failure(Status::WrongPlace, path, "is not a place for this");
    }
}

void requireBundle(const Unpacking &unpacking, const VerifiedPayload &payload, std::string_view name) {
    const std::string &place = unpacking.place();
    if (std::string_view(place).substr(place.rfind('/') + 1) != name) {
        throw Failure(Status::WrongPayload, payload.source(), "holds something else than " + std::string(name));
    }
}

/// With whatever rights the process has.
void installInto(const Folder &folder, const std::string &name, Unpacking &unpacking, const VerifiedPayload &payload) {
    Staging staging(folder);
    unpacking.writeTo(staging);
    if (isOlder(bundleVersion(staging.get(), name), bundleVersion(folder.get(), name))) {
        throw Failure(Status::OldPayload, payload.source(), "is older than the installed one");
    }
    staging.install(name, name);
}

void installAt(const std::string &path, Unpacking &unpacking, const VerifiedPayload &payload) {
    const PlainPath place = PlainPath::of(path);
    const Administration administration = beginInstallation();
    const Folder folder = place.folder == kToolFolder ? toolFolder() : Folder::makeAdministrators(place.folder);
    installInto(folder, place.name, unpacking, payload);
}

void installArchiveAt(const std::string &path, const std::string &signaturePath, const std::string &installPath) {
    const auto payload = VerifiedPayload::read(path, signaturePath);
    Unpacking unpacking(payload, Packing::Archive);
    requireBundle(unpacking, payload, PlainPath::of(installPath).name);
    installAt(installPath, unpacking, payload);
}

bool isAdministrators(const std::string &folder) {
    try {
        return Folder::openAdministrators(folder).isAdministratorsAlone();
    } catch (const Failure &) {
        return false;
    }
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
    const auto payload = VerifiedPayload::read(path, path + std::string(kSignatureSuffix));
    Unpacking unpacking(payload, Packing::Package);
    requirePlace(kPackagedBundles, unpacking.place());
    installAt(unpacking.place(), unpacking, payload);
}

void installClient(const std::string &path, const std::string &signaturePath, const std::string &installPath) {
    const PlainPath place = PlainPath::of(installPath);
    if (place.name != kClientBundle) {
        throw Failure(Status::WrongPlace, installPath, "is not the client");
    }
    const auto payload = VerifiedPayload::read(path, signaturePath);
    Unpacking unpacking(payload, Packing::Package);
    requireBundle(unpacking, payload, kClientBundle);
    // The client may stand in the computer's Applications folder, or wherever the caller could have put it himself.
    if (Caller::user() == 0 || (place.folder == kApplications && isAdministrators(place.folder))) {
        const Administration administration = beginInstallation();
        installInto(Folder::openAdministrators(place.folder), place.name, unpacking, payload);
    } else {
        Caller::becomeCallerForGood();
        const Folder folder = Folder::open(place.folder);
        if (::faccessat(folder.get(), ".", W_OK | X_OK, AT_EACCESS) != 0) {
            throw systemFailure(errno == EACCES ? Status::WrongPlace : Status::CannotWrite, place.folder);
        }
        installInto(folder, place.name, unpacking, payload);
    }
}

} // namespace updateqm
