#include "integrity/SignatureManager.h"

#include "platform/process/AtEnd.h"
#include "utils/Log.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>
#include <openssl/x509.h>

namespace quillmark {

namespace {

template <auto Free>
struct Release {
    template <class Object>
    void operator()(Object *object) const {
        Free(object);
    }
};

using Stream = std::unique_ptr<BIO, Release<BIO_free>>;
using Key = std::unique_ptr<EVP_PKEY, Release<EVP_PKEY_free>>;
using Operation = std::unique_ptr<EVP_PKEY_CTX, Release<EVP_PKEY_CTX_free>>;
using Digest = std::array<unsigned char, SHA_DIGEST_LENGTH>;

/// What stands in a block with a certain label, and what reads that and nothing else.
struct Form {
    std::string_view label;
    EVP_PKEY *(*decode)(const unsigned char *contents, long length);
};

EVP_PKEY *decodePublic(const unsigned char *contents, long length) { return d2i_PUBKEY(nullptr, &contents, length); }
EVP_PKEY *decodePrivate(const unsigned char *contents, long length) {
    const std::unique_ptr<PKCS8_PRIV_KEY_INFO, Release<PKCS8_PRIV_KEY_INFO_free>> information(
        d2i_PKCS8_PRIV_KEY_INFO(nullptr, &contents, length));
    return information == nullptr ? nullptr : EVP_PKCS82PKEY(information.get());
}
EVP_PKEY *decodeRsaPrivate(const unsigned char *contents, long length) {
    return d2i_PrivateKey(EVP_PKEY_RSA, nullptr, &contents, length);
}

// The second private form is the one that other programs have written since they took up more kinds of keys than RSA's.
constexpr Form kPublicForms[] = {{PEM_STRING_PUBLIC, decodePublic}};
constexpr Form kPrivateForms[] = {{PEM_STRING_RSA, decodeRsaPrivate}, {PEM_STRING_PKCS8INF, decodePrivate}};

/// Without this the library would ask on the terminal.
int noPassPhrase(char * /*buffer*/, int /*size*/, int /*isForWriting*/, void * /*context*/) { return -1; }

/// The key in the first block that the library takes for a key of the wanted sort; null when it is not one of the
/// forms.
template <size_t Count>
Key readKey(std::string_view text, const char *sort, const Form (&forms)[Count]) {
    const auto isAscii = [](char character) { return static_cast<unsigned char>(character) < 0x80; };
    if (text.size() > std::numeric_limits<int>::max() || !std::all_of(text.begin(), text.end(), isAscii)) {
        return nullptr;
    }
    const Stream stream(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
    char *label = nullptr;
    unsigned char *contents = nullptr;
    long length = 0;
    const AtEnd freed([&] {
        OPENSSL_clear_free(contents, static_cast<size_t>(length));
        OPENSSL_free(label);
    });
    if (stream == nullptr ||
        PEM_bytes_read_bio(&contents, &length, &label, sort, stream.get(), noPassPhrase, nullptr) != 1) {
        return nullptr;
    }
    const Form *form = std::find_if(std::begin(forms), std::end(forms),
                                    [label](const Form &candidate) { return candidate.label == label; });
    Key key(form == std::end(forms) ? nullptr : form->decode(contents, length));
    return key != nullptr && EVP_PKEY_is_a(key.get(), "RSA") == 1 ? std::move(key) : nullptr;
}

bool computeDigest(std::string_view data, Digest &digest) {
    return SHA1(reinterpret_cast<const unsigned char *>(data.data()), data.size(), digest.data()) != nullptr;
}

/// An operation that `init` begins, set to PKCS #1 v1.5 over a SHA-1 digest; null when the key does not do that.
Operation operationOn(const Key &key, int (*init)(EVP_PKEY_CTX *)) {
    Operation operation(EVP_PKEY_CTX_new(key.get(), nullptr));
    if (operation == nullptr || init(operation.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_padding(operation.get(), RSA_PKCS1_PADDING) != 1 ||
        EVP_PKEY_CTX_set_signature_md(operation.get(), EVP_sha1()) != 1) {
        return nullptr;
    }
    return operation;
}

void logFirstError() {
    const unsigned long error = ERR_get_error();
    std::array<char, 256> text{};
    ERR_error_string_n(error, text.data(), text.size());
    logError("Signature verify failed (error %i, %s)", static_cast<int>(error), text.data());
}

/// As byte blocks are printed: in hexadecimal, four bytes together.
std::string printed(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text = "<";
    for (size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        text += i > 0 && i % 4 == 0 ? " " : "";
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0xfU];
    }
    return text + '>';
}

} // namespace

SignatureManager &SignatureManager::sharedManager() {
    static auto &manager = *new SignatureManager; // never destroyed: other threads may ask until the very end
    return manager;
}

bool SignatureManager::verifySignature(std::string_view signature, std::string_view publicKey,
                                       std::string_view data) const {
    if (signature.empty() || publicKey.empty() || data.empty()) {
        return false;
    }
    ERR_clear_error(); // the first one is then this operation's
    const AtEnd cleared(ERR_clear_error);
    const Key key = readKey(publicKey, PEM_STRING_PUBLIC, kPublicForms);
    Digest digest{};
    if (key == nullptr || !computeDigest(data, digest)) {
        return false;
    }
    const Operation operation = operationOn(key, EVP_PKEY_verify_init);
    if (operation == nullptr ||
        EVP_PKEY_verify(operation.get(), reinterpret_cast<const unsigned char *>(signature.data()), signature.size(),
                        digest.data(), digest.size()) != 1) {
        logFirstError();
        return false;
    }
    logVerbose("Signature verified");
    return true;
}

std::optional<std::string> SignatureManager::generateSignature(std::string_view privateKey,
                                                               std::string_view data) const {
    if (privateKey.empty() || data.empty()) {
        return std::nullopt;
    }
    const AtEnd cleared(ERR_clear_error);
    const Key key = readKey(privateKey, PEM_STRING_EVP_PKEY, kPrivateForms);
    Digest digest{};
    if (key == nullptr || !computeDigest(data, digest)) {
        return std::nullopt;
    }
    const Operation operation = operationOn(key, EVP_PKEY_sign_init);
    std::string signature(static_cast<size_t>(EVP_PKEY_get_size(key.get())), '\0');
    size_t length = signature.size();
    if (operation == nullptr ||
        EVP_PKEY_sign(operation.get(), reinterpret_cast<unsigned char *>(signature.data()), &length, digest.data(),
                      digest.size()) != 1 ||
        length == 0) {
        return std::nullopt;
    }
    signature.resize(length);
    if (isLogVerboseVisible()) {
        logVerbose("Generated signature \"%@\"", printed(signature));
    }
    return signature;
}

} // namespace quillmark
