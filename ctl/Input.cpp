#include "Input.h"
#include "Command.h"

#include "accounts/KeyList.h"
#include "launcher/BundleDefaults.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "platform/values/Utf8Text.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace quillmark::ctl {

namespace {

constexpr const char *kStandardInput = "standard input";

/// What errno tells of the file.
Failure failureOf(const std::string &name) { return {name, std::generic_category().message(errno)}; }

std::string text(std::string bytes) {
    auto text = utf8Text(std::move(bytes));
    if (!text) {
        throw Failure{kStandardInput, "is no UTF-8"};
    }
    return *std::move(text);
}

} // namespace

Descriptor openForReading(const std::string &name) {
    Descriptor file(name == kStandardStream ? ::dup(STDIN_FILENO) : ::open(name.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat attributes {};
    if (!file.isOpen() || ::fstat(file.get(), &attributes) != 0) {
        throw failureOf(name);
    }
    if (S_ISDIR(attributes.st_mode)) {
        throw Failure{name, "file to open is a directory"};
    }
    return file;
}

std::string readAll(const Descriptor &file, const std::string &name) {
    std::string contents;
    std::array<char, 65536> piece{};
    while (const ssize_t count = ::read(file.get(), piece.data(), piece.size())) {
        if (count < 0) {
            throw failureOf(name);
        }
        contents.append(piece.data(), static_cast<size_t>(count));
    }
    return contents;
}

std::string standardInput() {
    const Descriptor file(::dup(STDIN_FILENO));
    return readAll(file, kStandardInput);
}

std::string standardInputText() { return text(standardInput()); }

std::string secretInput() {
    std::string bytes = standardInput();
    if (bytes.ends_with('\n')) {
        bytes.pop_back();
    }
    return bytes;
}

std::string secretInputText() { return text(secretInput()); }

void requirePreferences() {
    UserDefaults &defaults = platform().userDefaults;
    registerBundleDefaults();
    defaults.objectForKey(kUserList); // any look at them reads them
    if (const auto problem = defaults.problem()) {
        throw Failure{defaults.file(), *problem};
    }
}

} // namespace quillmark::ctl
