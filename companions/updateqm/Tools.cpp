#include "Tools.h"

#include "InstallPlaces.h"
#include "files/PlainPath.h"
#include "files/Staging.h"
#include "payload/Identity.h"
#include "payload/Payload.h"
#include "process/Failure.h"

#include <algorithm>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace updateqm {

namespace {

constexpr const Tool &kThisTool = kTools[0];
constexpr unsigned kSignatureMode = 0644;

const Tool &toolNamed(const std::string &name, unsigned mode) {
    const auto *const tool = std::find_if(std::begin(kTools), std::end(kTools), [&](const Tool &candidate) {
        return candidate.name == name && candidate.mode == mode;
    });
    if (tool == std::end(kTools)) {
        throw Failure(Status::WrongPlace, name, "is not a tool that is installed like this");
    }
    return *tool;
}

/// The version that the payload claims for the tool of that name. Raises a Failure when it is not that tool.
std::string versionOf(const VerifiedPayload &payload, const Tool &tool) {
    const auto identity = identityIn(payload.bytes());
    if (!identity || identity->name != tool.name) {
        throw Failure(Status::WrongPayload, payload.source(), "is not the tool " + std::string(tool.name));
    }
    return identity->version;
}

/// The version of the tool that is installed; nothing when there is none that is whole.
std::optional<std::string> installedVersion(const Folder &folder, const Tool &tool) {
    try {
        return versionOf(VerifiedPayload::readInstalled(folder, std::string(tool.name)), tool);
    } catch (const Failure &) {
        return std::nullopt;
    }
}

/// A tool that is older than this one, or than the one in its place, is not installed.
void refuseOlder(const Folder &folder, const VerifiedPayload &payload, const Tool &tool) {
    const std::string version = versionOf(payload, tool);
    if (isOlder(version, QUILLMARK_TOOL_VERSION)) {
        throw Failure(Status::OldPayload, payload.source(), "is older than this tool");
    }
    if (const auto installed = installedVersion(folder, tool); installed && isOlder(version, *installed)) {
        throw Failure(Status::OldPayload, payload.source(), "is older than the installed one");
    }
}

/// Tool and signature are two files. The new signature lies beside the old one until the tool is in its place, so that
/// one of them is right at any moment.
void install(const Folder &folder, const VerifiedPayload &payload, const Tool &tool) {
    Staging staging(folder);
    const std::string name(tool.name);
    const auto write = [&staging](const std::string &file, std::string_view bytes, unsigned mode) {
        const Descriptor written = staging.makeFile(file, mode);
        writeAll(written.get(), bytes, file);
        // Writing has taken the right to be run as the owner away again.
        must(::fchmod(written.get(), mode) == 0, file);
    };
    const std::string signature = name + std::string(kSignatureSuffix);
    const std::string nextSignature = name + std::string(kNextSignatureSuffix);
    write(nextSignature, payload.signature(), kSignatureMode);
    write(name, payload.bytes(), tool.mode);
    staging.install(nextSignature, nextSignature);
    staging.install(name, name);
    must(::renameat(folder.get(), nextSignature.c_str(), folder.get(), signature.c_str()) == 0, signature);
    must(::fsync(folder.get()) == 0, signature);
}

} // namespace

Administration beginInstallation() {
    Administration administration;
    try {
        const Folder folder = Folder::openAdministrators(std::string(kToolFolder));
        if (const auto installed = installedVersion(folder, kThisTool);
            installed && isOlder(QUILLMARK_TOOL_VERSION, *installed)) {
            throw Failure(Status::OldPayload, "updateqm", "is older than the installed one");
        }
    } catch (const Failure &failure) {
        if (failure.status() == Status::OldPayload) {
            throw;
        }
        // Nothing is installed, or not so that only the administrator can have done it.
    }
    return administration;
}

Folder toolFolder() {
    const PlainPath place = PlainPath::of(kToolFolder);
    return Folder::makeAdministrators(place.folder).takeInner(place.name);
}

void installItself(const std::string &signaturePath) {
    const auto payload = VerifiedPayload::readProgram(signaturePath);
    versionOf(payload, kThisTool);
    const Administration administration = beginInstallation();
    install(toolFolder(), payload, kThisTool);
}

void installTool(const std::string &path, const std::string &signaturePath, unsigned mode) {
    const Tool &tool = toolNamed(PlainPath::of(path).name, mode);
    const auto payload = VerifiedPayload::read(path, signaturePath);
    const Administration administration = beginInstallation();
    const Folder folder = toolFolder();
    refuseOlder(folder, payload, tool);
    install(folder, payload, tool);
}

namespace {

bool isInOrder(const Folder &folder, const Tool &tool) {
    struct stat status {};
    return ::fstatat(folder.get(), std::string(tool.name).c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           status.st_mode == (S_IFREG | tool.mode) && status.st_uid == 0 && status.st_gid == 0;
}

void repair(const Folder &folder, const Tool &tool) {
    // A copy takes its place: whoever could write to the file before may still have it open.
    const auto payload = VerifiedPayload::readInstalled(folder, std::string(tool.name));
    refuseOlder(folder, payload, tool);
    install(folder, payload, tool);
}

} // namespace

void repairTool(const std::string &name, unsigned mode) {
    const Tool &tool = toolNamed(name, mode);
    const Administration administration = beginInstallation();
    repair(toolFolder(), tool);
}

void repairAllTools() {
    const Administration administration = beginInstallation();
    const Folder folder = toolFolder();
    for (const Tool &tool : kTools) {
        if (::faccessat(folder.get(), std::string(tool.name).c_str(), F_OK, AT_SYMLINK_NOFOLLOW) != 0) {
            continue;
        }
        try {
            repair(folder, tool);
        } catch (const Failure &failure) {
            // One that waits for its own update, while this tool has had it, needs nothing when its rights are as they
            // were.
            if (failure.status() != Status::OldPayload || !isInOrder(folder, tool)) {
                throw;
            }
        }
    }
}

} // namespace updateqm
