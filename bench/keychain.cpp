// One secret read from the desktop's keyring, beside the simplest program that uses libsecret. It needs a session's bus
// with an unlocked keyring.

#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/linux/keyring/KeyringModule.h"

#include <benchmark/benchmark.h>
#include <libsecret/secret.h>

namespace quillmark {
namespace {

constexpr const char *kService = "bench";
constexpr const char *kAccount = "ada@example.com";
const std::string kDocument = R"({"encryptionKey":"0123456789abcdef","keepSignedIn":true,"password":"s3cret"})";

const SecretSchema &schema() {
    static const SecretSchema instance = [] {
        SecretSchema names{};
        names.name = "com.quillmark.Bench";
        names.flags = SECRET_SCHEMA_DONT_MATCH_NAME;
        names.attributes[0] = {"service", SECRET_SCHEMA_ATTRIBUTE_STRING};
        names.attributes[1] = {"account", SECRET_SCHEMA_ATTRIBUTE_STRING};
        return names;
    }();
    return instance;
}

void libsecret(benchmark::State &state) {
    for ([[maybe_unused]] auto run : state) {
        char *const secret =
            secret_password_lookup_sync(&schema(), nullptr, nullptr, "service", kService, "account", kAccount, nullptr);
        if (secret == nullptr || kDocument != secret) {
            state.SkipWithError("libsecret does not find the secret");
            break;
        }
        secret_password_free(secret);
    }
}

void ours(benchmark::State &state) {
    const auto bundle = nativeBundle(QUILLMARK_APP);
    KeyringModule keychain(*bundle);
    for ([[maybe_unused]] auto run : state) {
        std::unique_ptr<Keychain::Item> item;
        std::string data;
        if (keychain.findGenericPassword(kService, kAccount, item) != 0 || item->copyContent(data) != 0 ||
            data != kDocument) {
            state.SkipWithError("the keychain does not find the secret");
            break;
        }
    }
}

BENCHMARK(libsecret)->Name("keychain read/peer")->UseRealTime();
BENCHMARK(ours)->Name("keychain read/ours")->UseRealTime();

/// \returns whether the secret is there.
bool plant() {
    return secret_password_store_sync(&schema(), SECRET_COLLECTION_DEFAULT, "bench", kDocument.c_str(), nullptr,
                                      nullptr, "service", kService, "account", kAccount, nullptr) != FALSE;
}

} // namespace
} // namespace quillmark

int main(int count, char **arguments) {
    benchmark::Initialize(&count, arguments);
    if (!quillmark::plant()) {
        return EXIT_FAILURE;
    }
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
