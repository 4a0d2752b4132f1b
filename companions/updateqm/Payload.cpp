#include "Payload.h"

#include "Caller.h"
#include "Failure.h"
#include "VendorKey.h"
#include "integrity/SignatureManager.h"

#include <array>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <variant>

namespace updateqm {

namespace {

constexpr qint64 kLargestPayload = qint64{1} << 30U; // bytes
constexpr qint64 kLargestSignature = 65536;          // bytes; that of the largest key in use is 2048
constexpr const char *kCopy = "payload";

/// Raises a Failure for what is no regular file; it never waits for a writer, as a named pipe would have it.
Descriptor openWithCallersRights(const std::string &path, qint64 largest) {
    Place::of(path);
    Descriptor file;
    {
        const Caller::Rights rights;
        file = Descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    }
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0) {
        throw systemFailure(Status::UnreadablePayload, path);
    }
    if (!S_ISREG(status.st_mode) || status.st_size > largest) {
        throw Failure(Status::UnreadablePayload, path, "is no regular file of a sensible size");
    }
    return file;
}

void writeAll(int file, const char *bytes, size_t size, const std::string &what) {
    while (size > 0) {
        const ssize_t count = ::write(file, bytes, size);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            throw systemFailure(Status::CannotWrite, what);
        }
        bytes += count;
        size -= static_cast<size_t>(count);
    }
}

/// Reads to the end, or until there is more than expected, and hands each piece on.
template <class Take>
void readAll(int file, const std::string &path, qint64 largest, const Take &take) {
    std::array<char, 65536> piece{};
    qint64 total = 0;
    while (true) {
        const ssize_t count = ::read(file, piece.data(), piece.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            throw systemFailure(Status::UnreadablePayload, path);
        }
        if (count == 0) {
            return;
        }
        total += count;
        if (total > largest) {
            throw Failure(Status::UnreadablePayload, path, "grows while it is read");
        }
        take(piece.data(), static_cast<size_t>(count));
    }
}

QByteArray readSignature(const std::string &path) {
    const Descriptor file = openWithCallersRights(path, kLargestSignature);
    QByteArray signature;
    readAll(file.get(), path, kLargestSignature,
            [&signature](const char *bytes, size_t size) { signature.append(bytes, static_cast<qsizetype>(size)); });
    return signature;
}

Descriptor createFile(const Staging &staging, const std::string &name, unsigned mode) {
    Descriptor file(::openat(staging.get(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (!file.isOpen()) {
        throw systemFailure(Status::CannotWrite, name);
    }
    return file;
}

QByteArray mapped(int file, qint64 size) {
    if (size == 0) {
        return {};
    }
    void *const bytes = ::mmap(nullptr, static_cast<size_t>(size), PROT_READ, MAP_PRIVATE, file, 0);
    if (bytes == MAP_FAILED) {
        throw systemFailure(Status::CannotWrite, kCopy);
    }
    return QByteArray::fromRawData(static_cast<const char *>(bytes), size);
}

} // namespace

VerifiedPayload VerifiedPayload::copy(const Staging &staging, const std::string &path,
                                      const std::string &signaturePath) {
    return copy(staging, openWithCallersRights(path, kLargestPayload), path, signaturePath);
}

VerifiedPayload VerifiedPayload::copy(const Staging &staging, const Descriptor &file, const std::string &path,
                                      const std::string &signaturePath) {
    QByteArray signature = readSignature(signaturePath);
    const Descriptor copied = createFile(staging, kCopy, S_IRUSR | S_IWUSR);
    qint64 size = 0;
    readAll(file.get(), path, kLargestPayload, [&](const char *bytes, size_t count) {
        writeAll(copied.get(), bytes, count, path);
        size += static_cast<qint64>(count);
    });
    VerifiedPayload payload(path, kCopy, mapped(copied.get(), size), std::move(signature));
    const auto &signatures = quillmark::SignatureManager::sharedManager();
    if (!signatures.verifySignature(payload.m_signature, QString::fromLatin1(kVendorKey), payload.m_bytes)) {
        throw Failure(Status::WrongSignature, path,
                      "the signature \"" + signaturePath + "\" is not the vendor's for it");
    }
    return payload;
}

VerifiedPayload::VerifiedPayload(std::string source, std::string name, QByteArray bytes, QByteArray signature)
    : m_source(std::move(source)), m_name(std::move(name)), m_bytes(std::move(bytes)),
      m_signature(std::move(signature)) {}

VerifiedPayload::VerifiedPayload(VerifiedPayload &&other) noexcept
    : m_source(std::move(other.m_source)), m_name(std::move(other.m_name)),
      m_bytes(std::exchange(other.m_bytes, QByteArray())), m_signature(std::move(other.m_signature)) {}

VerifiedPayload::~VerifiedPayload() {
    if (!m_bytes.isEmpty()) {
        ::munmap(const_cast<char *>(m_bytes.constData()), static_cast<size_t>(m_bytes.size()));
    }
}

Descriptor writeFile(const Staging &staging, const std::string &name, const QByteArray &bytes, unsigned mode) {
    Descriptor file = createFile(staging, name, S_IRUSR | S_IWUSR);
    writeAll(file.get(), bytes.constData(), static_cast<size_t>(bytes.size()), name);
    if (::fchown(file.get(), 0, 0) != 0 || ::fchmod(file.get(), mode) != 0 || ::fsync(file.get()) != 0) {
        throw systemFailure(Status::CannotWrite, name);
    }
    return file;
}

} // namespace updateqm
