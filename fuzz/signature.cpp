#include "HeapLimit.h"
#include "integrity/SignatureManager.h"
#include "utils/Log.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <span>
#include <string>
#include <string_view>
#include <vector>

using namespace quillmark;

namespace {

std::string block(std::span<const uint8_t> contents, const char *label) {
    const std::string line = std::string(label) + "-----\n";
    std::vector<uint8_t> base64(contents.size() / 3 * 4 + 5); // with the zero behind it
    const int length = EVP_EncodeBlock(base64.data(), contents.data(), static_cast<int>(contents.size()));
    return "-----BEGIN " + line + std::string(base64.begin(), base64.begin() + length) + "\n-----END " + line;
}

void tryKey(std::string_view key, std::string_view signature) {
    const fuzz::HeapLimit limit(16);
    const SignatureManager &manager = SignatureManager::sharedManager();
    manager.verifySignature(signature, key, "data");
    const auto made = manager.generateSignature(key, "data");
    if ((made && made->empty()) || ERR_peek_error() != 0) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int * /*count*/, char *** /*arguments*/) {
    _setStandardStreams(nullptr, nullptr); // most inputs are errors
    return 0;
}

/// The first two bytes are the length of the key, the third says in what form it is; the signature follows the key.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    constexpr size_t kHead = 3;
    constexpr size_t kLongestKey = 4096; // longer ones only take longer
    if (size < kHead) {
        return 0;
    }
    const std::string_view rest(reinterpret_cast<const char *>(data) + kHead, size - kHead);
    const std::string_view key = rest.substr(0, std::min(size_t{data[0]} << 8U | data[1], kLongestKey));
    static constexpr const char *kLabels[] = {nullptr, "PUBLIC KEY", "PRIVATE KEY", "RSA PRIVATE KEY"};
    const char *label = kLabels[data[2] % std::size(kLabels)];
    tryKey(label == nullptr ? std::string(key) : block({data + kHead, key.size()}, label), rest.substr(key.size()));
    return 0;
}
