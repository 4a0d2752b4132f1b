#include "HeapLimit.h"
#include "integrity/SignatureManager.h"
#include "utils/Log.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <openssl/err.h>
#include <string_view>

using namespace quillmark;

namespace {

QString block(const QByteArray &contents, const char *label) {
    const QByteArray line = QByteArray(label) + "-----\n";
    return QString::fromLatin1("-----BEGIN " + line + contents.toBase64() + "\n-----END " + line);
}

void tryKey(const QString &key, const QByteArray &signature) {
    const fuzz::HeapLimit limit(16);
    const SignatureManager &manager = SignatureManager::sharedManager();
    manager.verifySignature(signature, key, "data");
    const auto made = manager.generateSignature(key, "data");
    if ((made && made->isEmpty()) || ERR_peek_error() != 0) {
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
    const std::string_view keyBytes = rest.substr(0, std::min(size_t{data[0]} << 8U | data[1], kLongestKey));
    const QByteArray key(keyBytes.data(), static_cast<qsizetype>(keyBytes.size()));
    const std::string_view signature = rest.substr(keyBytes.size());
    static constexpr const char *kLabels[] = {nullptr, "PUBLIC KEY", "PRIVATE KEY", "RSA PRIVATE KEY"};
    const char *label = kLabels[data[2] % std::size(kLabels)];
    tryKey(label == nullptr ? QString::fromLatin1(key) : block(key, label),
           QByteArray(signature.data(), static_cast<qsizetype>(signature.size())));
    return 0;
}
