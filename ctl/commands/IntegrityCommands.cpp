#include "Command.h"
#include "Input.h"

#include "integrity/SignatureManager.h"
#include "integrity/UnzipManager.h"
#include "platform/process/Descriptor.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace quillmark::ctl {

namespace {

std::string contentsOf(const std::string &name) { return readAll(openForReading(name), name); }

/// Standard input can be read once.
void allowOneStandardInput(CLI::App &app, std::initializer_list<const std::string *> names) {
    app.callback([names = std::vector<const std::string *>(names)] {
        if (std::count_if(names.begin(), names.end(), [](const auto *name) { return *name == kStandardStream; }) > 1) {
            throw CLI::ValidationError("only one file can be standard input");
        }
    });
}

std::string shortenedLine;

/// What was mapped and is not there any more, since another program has shortened the file.
void endShortened(int /*signal*/) {
    // Nothing is left to be done if the line can't be written.
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, shortenedLine.data(), shortenedLine.size());
    ::_exit(kFailed);
}

/// A file's contents. A regular file is mapped: to read a large one takes as long as to compute its digest.
class Contents {
public:
    explicit Contents(const std::string &name) {
        const Descriptor file = openForReading(name);
        struct stat attributes {};
        if (name != kStandardStream && ::fstat(file.get(), &attributes) == 0 && attributes.st_size > 0) {
            m_mapped = ::mmap(nullptr, static_cast<size_t>(attributes.st_size), PROT_READ, MAP_SHARED, file.get(), 0);
        }
        if (m_mapped == MAP_FAILED) {
            m_read = readAll(file, name);
            m_bytes = m_read;
            return;
        }
        shortenedLine = "quillmarkctl: " + name + ": was shortened while it was read\n";
        std::signal(SIGBUS, endShortened);
        m_bytes = {static_cast<const char *>(m_mapped), static_cast<size_t>(attributes.st_size)};
    }
    Contents(const Contents &) = delete;
    Contents &operator=(const Contents &) = delete;
    ~Contents() {
        if (m_mapped != MAP_FAILED) {
            ::munmap(m_mapped, m_bytes.size());
        }
    }

    std::string_view bytes() const { return m_bytes; }

private:
    void *m_mapped = MAP_FAILED;
    std::string m_read;
    std::string_view m_bytes;
};

struct SignArguments {
    std::string key;
    std::string file;
    std::string output;
};

Answer sign(const SignArguments &arguments) {
    const std::string key = contentsOf(arguments.key);
    const Contents data(arguments.file);
    if (data.bytes().empty()) {
        throw Failure{arguments.file, "is empty, so there is nothing to sign"};
    }
    const auto signature = SignatureManager::sharedManager().generateSignature(key, data.bytes());
    if (!signature) {
        throw Failure{arguments.key,
                      "makes no signature: it has to be an RSA private key as PEM, without a pass phrase"};
    }
    const std::unique_ptr<FILE, int (*)(FILE *)> file(
        arguments.output == kStandardStream ? stdout : std::fopen(arguments.output.c_str(), "we"), std::fclose);
    if (file == nullptr || std::fwrite(signature->data(), 1, signature->size(), file.get()) != signature->size() ||
        std::fflush(file.get()) != 0) {
        throw Failure{arguments.output, std::generic_category().message(errno)};
    }
    return Answer::Yes;
}

Action defineSign(CLI::App &app) {
    const auto arguments = std::make_shared<SignArguments>();
    app.add_option("--key", arguments->key, "the RSA private key, as PEM without a pass phrase")
        ->required()
        ->type_name("PRIVATE.pem");
    app.add_option("FILE", arguments->file, "what to sign; - is standard input")->required();
    app.add_option("--output", arguments->output, "where the signature is put; - is standard output")
        ->required()
        ->type_name("SIG");
    allowOneStandardInput(app, {&arguments->key, &arguments->file});
    return [arguments](const Output & /*output*/) { return sign(*arguments); };
}

struct VerifyArguments {
    std::string key;
    std::string signature;
    std::string file;
};

Action defineVerify(CLI::App &app) {
    const auto arguments = std::make_shared<VerifyArguments>();
    app.add_option("--key", arguments->key, "the RSA public key, as PEM")->required()->type_name("PUBLIC.pem");
    app.add_option("--signature", arguments->signature, "the signature")->required()->type_name("SIG");
    app.add_option("FILE", arguments->file, "what was signed; - is standard input")->required();
    allowOneStandardInput(app, {&arguments->key, &arguments->signature, &arguments->file});
    return [arguments](const Output & /*output*/) {
        const std::string key = contentsOf(arguments->key);
        const std::string signature = contentsOf(arguments->signature);
        const Contents data(arguments->file);
        return SignatureManager::sharedManager().verifySignature(signature, key, data.bytes()) ? Answer::Yes
                                                                                               : Answer::No;
    };
}

Action defineUnzip(CLI::App &app) {
    const auto archive = std::make_shared<std::string>();
    app.add_option("ARCHIVE", *archive, "the ZIP archive")->required();
    return [archive](const Output &output) {
        if (*archive == kStandardStream) {
            throw Failure{*archive, "standard input lies in no folder to extract to"};
        }
        const int status = UnzipManager(*archive).extractAll();
        output.line(std::to_string(status));
        if (status != 0) {
            openForReading(*archive);
            throw Failure{*archive, "is no ZIP archive"};
        }
        return Answer::Yes;
    };
}

constexpr Command kCommands[] = {
    {nullptr, "sign", "sign a file with an RSA private key",
     "quillmarkctl sign --key private.pem update.zip --output update.zip.sig", defineSign},
    {nullptr, "verify", "tell whether a file's signature was made with the key's other half",
     "quillmarkctl verify --key public.pem --signature update.zip.sig update.zip", defineVerify},
    {nullptr, "unzip", "extract a ZIP archive into the folder that holds it, and print the status",
     "quillmarkctl unzip /tmp/update/update.zip", defineUnzip},
};

} // namespace

std::span<const Command> integrityCommands() { return kCommands; }

} // namespace quillmark::ctl
