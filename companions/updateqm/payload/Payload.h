#pragma once

#include <string>
#include <string_view>

namespace updateqm {

class Folder;

/// A payload in memory, where nobody can change it any more, that the vendor has signed. There is no way to one of
/// these but through the check of the very bytes that it holds.
class VerifiedPayload {
public:
    /// Reads both files with the rights that the process has.
    static VerifiedPayload read(const std::string &path, const std::string &signaturePath);
    /// This very program.
    static VerifiedPayload readProgram(const std::string &signaturePath);
    /// An installed tool with the signature that was installed with it.
    static VerifiedPayload readInstalled(const Folder &folder, const std::string &name);

    std::string_view bytes() const { return m_bytes; }
    const std::string &signature() const { return m_signature; }
    /// Where it came from, for messages.
    const std::string &source() const { return m_source; }

private:
    VerifiedPayload(std::string source, std::string bytes, std::string signature);
    bool isVendors() const;

    std::string m_source;
    std::string m_bytes;
    std::string m_signature;
};

/// What follows a tool's name in the names of its signatures: that of the tool that is there, and that of the one which
/// is about to take its place.
inline constexpr std::string_view kSignatureSuffix = ".sig";
inline constexpr std::string_view kNextSignatureSuffix = ".sig.next";

} // namespace updateqm
