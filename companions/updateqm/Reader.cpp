#include "Reader.h"

#include "Failure.h"
#include "Folder.h"

#include <array>

namespace updateqm {

QByteArray Reader::contents(qint64 largest) {
    QByteArray bytes;
    std::array<char, 65536> piece{};
    while (true) {
        const la_ssize_t count = ::archive_read_data(m_archive.get(), piece.data(), piece.size());
        if (count == 0) {
            return bytes;
        }
        if (count < 0) {
            must(static_cast<int>(count));
            continue;
        }
        bytes.append(piece.data(), count);
        if (bytes.size() > largest) {
            throw Failure(Status::DamagedPayload, m_source, "holds more than a package does");
        }
    }
}

void Reader::must(int status) const {
    if (status != ARCHIVE_OK) {
        const char *const why = ::archive_error_string(m_archive.get());
        throw Failure(Status::DamagedPayload, m_source, why != nullptr ? why : "can't be unpacked");
    }
}

std::string pathOf(archive_entry *entry, const std::string &source) {
    const char *const raw = ::archive_entry_pathname(entry);
    std::string path = raw != nullptr ? raw : "";
    if (path == "." || path == "./") {
        return {};
    }
    if (path.starts_with("./")) {
        path.erase(0, 2);
    }
    if (path.ends_with('/')) {
        path.pop_back();
    }
    try {
        Place::of('/' + path);
    } catch (const Failure &) {
        throw Failure(Status::DamagedPayload, source, "holds an entry that would leave its folder");
    }
    return path;
}

} // namespace updateqm
