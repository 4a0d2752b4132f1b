#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmark {

/// Signs blocks of data with an RSA private key, and verifies such signatures: PKCS #1 v1.5 over the data's SHA-1
/// digest.
///
/// A signature is kept apart from its data and is raw bytes, as many as the key's modulus has. Keys are PEM texts of
/// ASCII characters without a pass phrase, and nobody is ever asked for one. The public key is a PUBLIC KEY block; the
/// private key a PRIVATE KEY or RSA PRIVATE KEY block. Any thread may call; there is no state.
class SignatureManager {
public:
    static SignatureManager &sharedManager();

    /// \returns false, too, when an argument is empty or the key can't be read; only a signature that does not match is
    /// logged.
    bool verifySignature(std::string_view signature, std::string_view publicKey, std::string_view data) const;
    /// \returns nothing when an argument is empty, or the key can't be read or is too short for a signature.
    std::optional<std::string> generateSignature(std::string_view privateKey, std::string_view data) const;
};

} // namespace quillmark
