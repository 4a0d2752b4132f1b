#pragma once

#include "Folder.h"

#include <QByteArray>
#include <string>
#include <string_view>

namespace updateqm {

/// A copy of a payload that only the administrator can change, and that the vendor has signed. There is no way to one
/// of these but through the check of the very bytes that it holds.
class VerifiedPayload {
public:
    /// Copies a payload and its signature with the caller's rights, and checks the copy.
    static VerifiedPayload copy(const Staging &staging, const std::string &path, const std::string &signaturePath);
    /// The same for a payload that is open already.
    static VerifiedPayload copy(const Staging &staging, const Descriptor &file, const std::string &path,
                                const std::string &signaturePath);

    VerifiedPayload(const VerifiedPayload &) = delete;
    VerifiedPayload &operator=(const VerifiedPayload &) = delete;
    VerifiedPayload(VerifiedPayload &&other) noexcept;
    VerifiedPayload &operator=(VerifiedPayload &&) = delete;
    ~VerifiedPayload();

    /// The copy's name in the staging folder.
    const std::string &name() const { return m_name; }
    const QByteArray &bytes() const { return m_bytes; }
    const QByteArray &signature() const { return m_signature; }
    /// Where it came from, for messages.
    const std::string &source() const { return m_source; }

private:
    VerifiedPayload(std::string source, std::string name, QByteArray bytes, QByteArray signature);

    std::string m_source;
    std::string m_name;
    QByteArray m_bytes; // the file, mapped
    QByteArray m_signature;
};

/// Writes a new file. \returns it, still open.
Descriptor writeFile(const Staging &staging, const std::string &name, const QByteArray &bytes, unsigned mode);

} // namespace updateqm
