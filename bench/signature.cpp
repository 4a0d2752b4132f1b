/// Verifying a signature: the bare operations on a key that is there already, the openssl program, ours.

#include "integrity/SignatureManager.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace quillmark;

void require(bool isSo) {
    if (!isSo) {
        std::abort();
    }
}

/// A key of 2048 bits; its public half also in a file for the other program.
class Key {
public:
    Key() {
        BIO *text = BIO_new(BIO_s_mem());
        PEM_write_bio_PUBKEY(text, m_key);
        char *bytes = nullptr;
        const long length = BIO_get_mem_data(text, &bytes);
        m_publicPem = std::string(bytes, static_cast<size_t>(length));
        BIO_free(text);
        BIO *secret = BIO_new(BIO_s_mem());
        PEM_write_bio_PrivateKey(secret, m_key, nullptr, nullptr, 0, nullptr, nullptr);
        const long secretLength = BIO_get_mem_data(secret, &bytes);
        m_privatePem = std::string(bytes, static_cast<size_t>(secretLength));
        BIO_free(secret);
    }
    Key(const Key &) = delete;
    Key &operator=(const Key &) = delete;
    ~Key() { EVP_PKEY_free(m_key); }

    EVP_PKEY *get() const { return m_key; }
    const std::string &publicPem() const { return m_publicPem; }
    const std::string &privatePem() const { return m_privatePem; }

private:
    EVP_PKEY *m_key = EVP_RSA_gen(2048);
    std::string m_publicPem;
    std::string m_privatePem;
};

const Key &key() {
    static const Key theKey;
    return theKey;
}

/// Data of one size with its signature, in memory and in files.
class Signed {
public:
    explicit Signed(size_t size)
        : m_data(size, 'x'),
          m_signature(*SignatureManager::sharedManager().generateSignature(key().privatePem(), m_data)),
          m_folder(std::filesystem::temp_directory_path() / "quillmark-bench-signature") {
        std::filesystem::create_directory(m_folder);
        write(dataFile(), m_data);
        write(signatureFile(), m_signature);
        write(keyFile(), key().publicPem());
    }
    Signed(const Signed &) = delete;
    Signed &operator=(const Signed &) = delete;
    ~Signed() { std::filesystem::remove_all(m_folder); }

    const std::string &data() const { return m_data; }
    const std::string &signature() const { return m_signature; }
    std::string dataFile() const { return m_folder / "data"; }
    std::string signatureFile() const { return m_folder / "signature"; }
    std::string keyFile() const { return m_folder / "key.pem"; }

private:
    static void write(const std::string &path, std::string_view bytes) {
        std::ofstream(path, std::ios::binary) << bytes;
    }

    std::string m_data;
    std::string m_signature;
    std::filesystem::path m_folder;
};

const unsigned char *unsignedBytes(std::string_view bytes) {
    return reinterpret_cast<const unsigned char *>(bytes.data());
}

void bareVerify(benchmark::State &state) {
    const Signed what(static_cast<size_t>(state.range(0)));
    for ([[maybe_unused]] auto round : state) {
        std::array<unsigned char, SHA_DIGEST_LENGTH> digest{};
        SHA1(unsignedBytes(what.data()), what.data().size(), digest.data());
        EVP_PKEY_CTX *operation = EVP_PKEY_CTX_new(key().get(), nullptr);
        EVP_PKEY_verify_init(operation);
        EVP_PKEY_CTX_set_signature_md(operation, EVP_sha1());
        require(EVP_PKEY_verify(operation, unsignedBytes(what.signature()), what.signature().size(), digest.data(),
                                digest.size()) == 1);
        EVP_PKEY_CTX_free(operation);
    }
}

void programVerify(benchmark::State &state) {
    const Signed what(static_cast<size_t>(state.range(0)));
    std::array<std::string, 7> words{"openssl",           "dgst", "-sha1", "-verify", what.keyFile(), "-signature",
                                     what.signatureFile()};
    std::string dataFile = what.dataFile();
    std::array<char *, 9> arguments{};
    for (size_t i = 0; i < words.size(); ++i) {
        arguments[i] = words[i].data();
    }
    arguments[words.size()] = dataFile.data();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    for ([[maybe_unused]] auto round : state) {
        pid_t child = 0;
        int status = -1;
        require(::posix_spawnp(&child, "openssl", &actions, nullptr, arguments.data(), environ) == 0);
        require(::waitpid(child, &status, 0) == child && status == 0);
    }
    posix_spawn_file_actions_destroy(&actions);
}

void ourVerify(benchmark::State &state) {
    const Signed what(static_cast<size_t>(state.range(0)));
    for ([[maybe_unused]] auto round : state) {
        require(SignatureManager::sharedManager().verifySignature(what.signature(), key().publicPem(), what.data()));
    }
}

void sizes(benchmark::internal::Benchmark *benchmark) {
    benchmark->Arg(1 << 10)->Arg(1 << 20)->Arg(256 << 20)->UseRealTime();
}

// NOLINTBEGIN(cert-err58-cpp): that is how benchmarks are registered
BENCHMARK(bareVerify)->Name("verify/floor")->Apply(sizes);
BENCHMARK(programVerify)->Name("verify/peer")->Apply(sizes);
BENCHMARK(ourVerify)->Name("verify/ours")->Apply(sizes);
// NOLINTEND(cert-err58-cpp)

} // namespace
