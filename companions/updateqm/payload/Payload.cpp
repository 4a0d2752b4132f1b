#include "payload/Payload.h"

#include "VendorKey.h"
#include "files/Folder.h"
#include "files/PlainPath.h"
#include "integrity/SignatureManager.h"
#include "process/Caller.h"
#include "process/Failure.h"

#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace updateqm {

namespace {

constexpr size_t kLargestPayload = size_t{512} << 20U; // bytes; it is held in memory
constexpr size_t kLargestSignature = 65536;            // bytes; that of the largest key in use is 2048

/// \param folder where relative names begin. Raises a Failure for what is not a regular file; it never waits for a
/// writer, as a named pipe would have it.
std::string contentsOf(int folder, const std::string &name, const std::string &path, size_t largest, int flags = 0) {
    const Descriptor file(::openat(folder, name.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | flags));
    struct stat status {};
    must(file.isOpen() && ::fstat(file.get(), &status) == 0, path, Status::UnreadablePayload);
    if (!S_ISREG(status.st_mode) || static_cast<size_t>(status.st_size) > largest) {
        throw Failure(Status::UnreadablePayload, path, "is not a regular file of a sensible size");
    }
    std::string contents;
    contents.reserve(static_cast<size_t>(status.st_size));
    std::array<char, 65536> piece{};
    while (true) {
        const ssize_t count = ::read(file.get(), piece.data(), piece.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        must(count >= 0, path, Status::UnreadablePayload);
        if (count == 0) {
            return contents;
        }
        if (contents.size() + static_cast<size_t>(count) > largest) {
            throw Failure(Status::UnreadablePayload, path, "grows while it is read");
        }
        contents.append(piece.data(), static_cast<size_t>(count));
    }
}

std::string contentsOf(const std::string &path, size_t largest) {
    PlainPath::of(path);
    return contentsOf(AT_FDCWD, path, path, largest);
}

Failure wrongSignature(const std::string &path, const std::string &signaturePath) {
    return {Status::WrongSignature, path, "the signature \"" + signaturePath + "\" is not the vendor's for it"};
}

} // namespace

VerifiedPayload VerifiedPayload::read(const std::string &path, const std::string &signaturePath) {
    VerifiedPayload payload(path, contentsOf(path, kLargestPayload), contentsOf(signaturePath, kLargestSignature));
    if (!payload.isVendors()) {
        throw wrongSignature(path, signaturePath);
    }
    return payload;
}

VerifiedPayload VerifiedPayload::readProgram(const std::string &signaturePath) {
    Caller::becomeAdministrator(); // nobody else may look into this process
    std::string program = contentsOf("/proc/self/exe", kLargestPayload);
    Caller::becomeCaller();
    VerifiedPayload payload("updateqm", std::move(program), contentsOf(signaturePath, kLargestSignature));
    if (!payload.isVendors()) {
        throw wrongSignature(payload.source(), signaturePath);
    }
    return payload;
}

VerifiedPayload VerifiedPayload::readInstalled(const Folder &folder, const std::string &name) {
    const std::string path = folder.path() + '/' + name;
    const auto read = [&folder](const std::string &file, size_t largest) {
        return contentsOf(folder.get(), file, folder.path() + '/' + file, largest, O_NOFOLLOW);
    };
    VerifiedPayload payload(path, read(name, kLargestPayload), {});
    // A run that was killed may have left the signature of the tool where that of the next one is written.
    for (const std::string_view suffix : {kSignatureSuffix, kNextSignatureSuffix}) {
        try {
            payload.m_signature = read(name + std::string(suffix), kLargestSignature);
        } catch (const Failure &) {
            if (suffix == kSignatureSuffix) {
                continue;
            }
            throw wrongSignature(path, path + std::string(kSignatureSuffix));
        }
        if (payload.isVendors()) {
            return payload;
        }
    }
    throw wrongSignature(path, path + std::string(kSignatureSuffix));
}

bool VerifiedPayload::isVendors() const {
    return quillmark::SignatureManager::sharedManager().verifySignature(m_signature, kVendorKey, m_bytes);
}

VerifiedPayload::VerifiedPayload(std::string source, std::string bytes, std::string signature)
    : m_source(std::move(source)), m_bytes(std::move(bytes)), m_signature(std::move(signature)) {}

} // namespace updateqm
