#include "Tools.h"

#include "Catalogue.h"
#include "Failure.h"
#include "Payload.h"
#include "ToolIdentity.h"
#include "utils/VersionText.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

namespace updateqm {

namespace {

constexpr std::string_view kSignatureSuffix = ".sig";

const Tool &toolNamed(const std::string &name, unsigned mode) {
    const auto *const tool = std::find_if(std::begin(kTools), std::end(kTools), [&](const Tool &candidate) {
        return candidate.name == name && candidate.mode == mode;
    });
    if (tool == std::end(kTools)) {
        throw Failure(Status::WrongPlace, name, "is no tool that is installed like this");
    }
    return *tool;
}

/// The version that the payload claims for the tool of that name. Raises a Failure when it is not that tool.
QString versionOf(const VerifiedPayload &payload, const Tool &tool) {
    const QByteArray mark =
        QByteArray(QUILLMARK_TOOL_MARK) + QByteArray(tool.name.data(), qsizetype(tool.name.size())) + ' ';
    const qsizetype begin = payload.bytes().indexOf(mark);
    if (begin < 0) {
        throw Failure(Status::WrongPayload, payload.source(), "is not the tool " + std::string(tool.name));
    }
    const qsizetype version = begin + mark.size();
    return QString::fromLatin1(payload.bytes().mid(version, payload.bytes().indexOf('\x01', version) - version));
}

void refuseOlder(const VerifiedPayload &payload, const QString &version) {
    const auto numbers = [](const QString &text) {
        const auto parts = quillmark::microsoftStyleVersionFromString(text);
        return std::tuple(parts.major, parts.minor, parts.build, parts.revision);
    };
    if (numbers(version) < numbers(QStringLiteral(QUILLMARK_TOOL_VERSION))) {
        throw Failure(Status::OldPayload, payload.source(), "is older than this tool");
    }
}

/// The signature goes first: a tool without its signature could never be repaired, the other way round it only waits.
void install(const Staging &staging, const VerifiedPayload &payload, const Tool &tool) {
    const std::string name(tool.name);
    const std::string signatureName = name + std::string(kSignatureSuffix);
    writeFile(staging, signatureName, payload.signature(), S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH);
    const Descriptor copy(::openat(staging.get(), payload.name().c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (!copy.isOpen() || ::fchown(copy.get(), 0, 0) != 0 || ::fchmod(copy.get(), tool.mode) != 0 ||
        ::fsync(copy.get()) != 0) {
        throw systemFailure(Status::CannotWrite, name);
    }
    staging.install(signatureName, signatureName);
    staging.install(payload.name(), name);
}

} // namespace

Folder toolFolder() {
    Folder folder = Folder::make(std::string(kToolFolder));
    folder.secure();
    return folder;
}

void installItself(const std::string &signaturePath) {
    const Tool &tool = kTools[0];
    const Folder folder = toolFolder();
    const Staging staging(folder);
    const Descriptor self(::open("/proc/self/exe", O_RDONLY | O_CLOEXEC));
    if (!self.isOpen()) {
        throw systemFailure(Status::UnreadablePayload, "/proc/self/exe");
    }
    const auto payload = VerifiedPayload::copy(staging, self, std::string(tool.name), signaturePath);
    versionOf(payload, tool);
    install(staging, payload, tool);
}

void installTool(const std::string &path, const std::string &signaturePath, unsigned mode) {
    const Tool &tool = toolNamed(Place::of(path).name, mode);
    const Folder folder = toolFolder();
    const Staging staging(folder);
    const auto payload = VerifiedPayload::copy(staging, path, signaturePath);
    refuseOlder(payload, versionOf(payload, tool));
    install(staging, payload, tool);
}

void repairTool(const std::string &name, unsigned mode) {
    const Tool &tool = toolNamed(name, mode);
    const Folder folder = toolFolder();
    const Staging staging(folder);
    const std::string path = folder.path() + '/' + name;
    // A copy takes its place: whoever could write to the file before may still have it open.
    const auto payload = VerifiedPayload::copy(staging, path, path + std::string(kSignatureSuffix));
    versionOf(payload, tool);
    install(staging, payload, tool);
}

void repairAllTools() {
    const Folder folder = toolFolder();
    for (const Tool &tool : kTools) {
        if (::faccessat(folder.get(), std::string(tool.name).c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
            repairTool(std::string(tool.name), tool.mode);
        }
    }
}

} // namespace updateqm
