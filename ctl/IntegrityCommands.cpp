#include "Command.h"

#include "integrity/SignatureManager.h"
#include "integrity/UnzipManager.h"

#include <CLI/CLI.hpp>
#include <QFile>
#include <algorithm>
#include <csignal>
#include <memory>
#include <unistd.h>

namespace quillmark::ctl {

namespace {

/// Stands for standard input among the files that are read, for standard output among the others.
constexpr const char *kStandardStream = "-";

/// Opens a file that a command names; "-" is standard input.
void openForReading(QFile &file, const std::string &name) {
    file.setFileName(QString::fromStdString(name));
    const bool isOpen = name == kStandardStream ? file.open(STDIN_FILENO, QIODevice::ReadOnly | QIODevice::Unbuffered)
                                                : file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    if (!isOpen) {
        throw Failure{file.fileName(), file.errorString()};
    }
}

QByteArray readAll(QFile &file) {
    QByteArray contents = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        throw Failure{file.fileName(), file.errorString()};
    }
    return contents;
}

QByteArray contentsOf(const std::string &name) {
    QFile file;
    openForReading(file, name);
    return readAll(file);
}

/// A key's text. Keys are ASCII; what is not stays other than ASCII.
QString keyIn(const std::string &name) { return QString::fromLatin1(contentsOf(name)); }

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
        openForReading(m_file, name);
        uchar *mapped = name == kStandardStream || m_file.size() == 0 ? nullptr : m_file.map(0, m_file.size());
        if (mapped == nullptr) {
            m_bytes = readAll(m_file);
            return;
        }
        shortenedLine = "quillmarkctl: " + name + ": was shortened while it was read\n";
        std::signal(SIGBUS, endShortened);
        m_bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(mapped), m_file.size());
    }
    Contents(const Contents &) = delete;
    Contents &operator=(const Contents &) = delete;
    ~Contents() = default;

    const QByteArray &bytes() const { return m_bytes; }

private:
    QFile m_file; // keeps the mapping
    QByteArray m_bytes;
};

struct SignArguments {
    std::string key;
    std::string file;
    std::string output;
};

Answer sign(const SignArguments &arguments) {
    const QString key = keyIn(arguments.key);
    const Contents data(arguments.file);
    if (data.bytes().isEmpty()) {
        throw Failure{QString::fromStdString(arguments.file), QStringLiteral("is empty, so there is nothing to sign")};
    }
    const auto signature = SignatureManager::sharedManager().generateSignature(key, data.bytes());
    if (!signature) {
        throw Failure{
            QString::fromStdString(arguments.key),
            QStringLiteral("makes no signature: it has to be an RSA private key as PEM, without a pass phrase")};
    }
    QFile file(QString::fromStdString(arguments.output));
    const bool isOpen =
        arguments.output == kStandardStream ? file.open(stdout, QIODevice::WriteOnly) : file.open(QIODevice::WriteOnly);
    if (!isOpen || file.write(*signature) != signature->size() || !file.flush()) {
        throw Failure{file.fileName(), file.errorString()};
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
        const QString key = keyIn(arguments->key);
        const QByteArray signature = contentsOf(arguments->signature);
        const Contents data(arguments->file);
        return SignatureManager::sharedManager().verifySignature(signature, key, data.bytes()) ? Answer::Yes
                                                                                               : Answer::No;
    };
}

Action defineUnzip(CLI::App &app) {
    const auto archive = std::make_shared<std::string>();
    app.add_option("ARCHIVE", *archive, "the ZIP archive")->required();
    return [archive](const Output &output) {
        const QString path = QString::fromStdString(*archive);
        if (*archive == kStandardStream) {
            throw Failure{path, QStringLiteral("standard input lies in no folder to extract to")};
        }
        const int status = UnzipManager(path).extractAll();
        output.line(QString::number(status));
        if (status != 0) {
            QFile file;
            openForReading(file, *archive);
            throw Failure{path, QStringLiteral("is no ZIP archive")};
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
