#include "payload/BundleVersion.h"

#include "payload/Reading.h"
#include "process/Confined.h"
#include "process/Failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace updateqm {

namespace {

constexpr off_t kLargestDescription = off_t{1} << 20U; // bytes

/// Where bundles, frameworks and flat bundles have their descriptions.
constexpr const char *kDescriptions[] = {"/Contents/Info.plist", "/Versions/Current/Resources/Info.plist",
                                         "/Info.plist"};

std::string descriptionOf(int folder, const std::string &name) {
    for (const char *const path : kDescriptions) {
        const quillmark::Descriptor file(::openat(folder, (name + path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        struct stat status {};
        if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
            status.st_size > kLargestDescription) {
            continue;
        }
        std::string text(static_cast<size_t>(status.st_size), '\0');
        const ssize_t count = ::read(file.get(), text.data(), text.size());
        text.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
        return text;
    }
    return {};
}

} // namespace

std::string bundleVersion(int folder, const std::string &name) {
    const std::string description = descriptionOf(folder, name);
    if (description.empty()) {
        return {};
    }
    try {
        Confined reader(name, [&description](const RecordWriter &records) { readVersion(description, records); });
        return reader.next().text;
    } catch (const Failure &) {
        return {}; // a damaged bundle may be replaced by any other
    }
}

} // namespace updateqm
