#include "Bundles.h"

#include "Archive.h"
#include "Caller.h"
#include "Catalogue.h"
#include "Failure.h"
#include "Package.h"
#include "Payload.h"
#include "Tools.h"

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
    // Nothing is touched elsewhere before the signature is found to be right.
    const Folder tools = toolFolder();
    const Staging inspection(tools);
    const auto payload = VerifiedPayload::copy(inspection, path, signaturePath);
    const Place place = Place::of(installPath);
    const Folder folder = Folder::make(place.folder);
    const Staging staging(folder);
    unpackArchive(staging, payload, place.name);
    settleAndInstall(staging, place.name, Programs::ByTheirFolder);
}

void installPackageAt(const VerifiedPayload &package, const Folder &folder, const std::string &name) {
    const Staging staging(folder);
    unpackPackage(staging, package, name);
    settleAndInstall(staging, name, Programs::ByTheirMode);
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
    // Nothing is touched elsewhere before the signature is found to be right.
    const Folder tools = toolFolder();
    const Staging inspection(tools);
    const auto payload = VerifiedPayload::copy(inspection, path, path + ".sig");
    const std::string installPath = installPathOf(payload);
    requirePlace(kPackagedBundles, installPath);
    const Place place = Place::of(installPath);
    installPackageAt(payload, Folder::make(place.folder), place.name);
}

void installClient(const std::string &path, const std::string &signaturePath, const std::string &installPath) {
    const Place place = Place::of(installPath);
    if (place.name != kClientBundle) {
        throw Failure(Status::WrongPlace, installPath, "is not the client");
    }
    const Folder folder = folderForClient(place.folder);
    // Nothing is touched elsewhere before the signature is found to be right.
    const Folder tools = toolFolder();
    const Staging inspection(tools);
    const auto payload = VerifiedPayload::copy(inspection, path, signaturePath);
    if (Place::of(installPathOf(payload)).name != kClientBundle) {
        throw Failure(Status::WrongPayload, path, "is not the client");
    }
    installPackageAt(payload, folder, place.name);
}

} // namespace updateqm
