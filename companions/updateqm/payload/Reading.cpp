#include "payload/Reading.h"

#include "files/PlainPath.h"
#include "platform/propertylist/PropertyListFormats.h"
#include "process/Failure.h"
#include "process/Records.h"

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <array>
#include <memory>
#include <pugixml.hpp>
#include <set>
#include <sys/stat.h>

namespace updateqm {

namespace {

using Kind = Record::Kind;

constexpr size_t kLargestDescription = size_t{1} << 20U; // bytes
constexpr size_t kLargestContents = size_t{512} << 20U;  // bytes, compressed

Failure damaged(const std::string &why) { return {Status::DamagedPayload, {}, why}; }

/// Reads an archive in memory, entry after entry.
class Reader {
public:
    /// \param allowFormats lets the reader understand the formats that are wanted, and no others.
    template <class AllowFormats>
    Reader(std::string_view bytes, const AllowFormats &allowFormats)
        : m_archive(::archive_read_new(), ::archive_read_free) {
        allowFormats(m_archive.get());
        require(::archive_read_open_memory(m_archive.get(), bytes.data(), bytes.size()));
    }

    /// \returns null at the end.
    archive_entry *next() {
        archive_entry *entry = nullptr;
        const int status = ::archive_read_next_header(m_archive.get(), &entry);
        if (status == ARCHIVE_EOF) {
            return nullptr;
        }
        require(status);
        return entry;
    }

    /// Hands on the current entry's contents, piece after piece.
    template <class Take>
    void read(const Take &take) {
        std::array<char, kLargestRecord> piece{};
        while (true) {
            const la_ssize_t count = ::archive_read_data(m_archive.get(), piece.data(), piece.size());
            if (count == 0) {
                return;
            }
            require(count < 0 ? static_cast<int>(count) : ARCHIVE_OK);
            take(std::string_view(piece.data(), static_cast<size_t>(count)));
        }
    }

private:
    void require(int status) const {
        if (status != ARCHIVE_OK) {
            const char *const why = ::archive_error_string(m_archive.get());
            throw damaged(why != nullptr ? why : "can't be unpacked");
        }
    }

    std::unique_ptr<archive, int (*)(archive *)> m_archive;
};

/// The path of an entry without a leading "./" and a trailing slash; empty for the folder that holds everything.
std::string pathOf(archive_entry *entry) {
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
    requirePlainPath(path, {});
    return path;
}

/// The one bundle in the archive.
std::string bundleIn(Reader reader) {
    std::string bundle;
    while (archive_entry *const entry = reader.next()) {
        const std::string path = pathOf(entry);
        const std::string top = path.substr(0, path.find('/'));
        if (!top.empty() && !bundle.empty() && bundle != top) {
            throw Failure(Status::WrongPayload, {}, "holds more than one bundle");
        }
        bundle = top.empty() ? bundle : top;
    }
    return bundle;
}

bool isInProgramFolder(const std::string &path) {
    return ('/' + path.substr(0, path.rfind('/'))).ends_with("/MacOS") && path.find('/') != std::string::npos;
}

/// Tells of a bundle's entries. Each folder comes once, and before what is in it.
class BundleTeller {
public:
    explicit BundleTeller(const RecordWriter &records) : m_records(records) {}

    template <class IsProgram>
    void tell(Reader reader, const IsProgram &isProgram) {
        while (archive_entry *const entry = reader.next()) {
            const std::string path = pathOf(entry);
            const auto type = ::archive_entry_filetype(entry);
            const bool isKnown = type == AE_IFREG || type == AE_IFDIR || type == AE_IFLNK;
            if (path.empty()) {
                continue;
            }
            if (!isKnown || ::archive_entry_hardlink(entry) != nullptr) {
                throw damaged("holds \"" + path + "\", which is not a plain file, folder or link");
            }
            tellFolders(path, type == AE_IFDIR);
            if (type == AE_IFLNK) {
                const char *const target = ::archive_entry_symlink(entry);
                m_records.write(Kind::Link, path + '\0' + (target != nullptr ? target : ""));
            } else if (type == AE_IFREG) {
                m_records.write(isProgram(entry, path) ? Kind::Program : Kind::File, path);
                reader.read([this](std::string_view piece) { m_records.write(Kind::Contents, piece); });
            }
        }
    }

private:
    void tellFolders(const std::string &path, bool isFolder) {
        for (size_t end = path.find('/'); end != std::string::npos; end = path.find('/', end + 1)) {
            tellFolder(path.substr(0, end));
        }
        if (isFolder) {
            tellFolder(path);
        }
    }

    void tellFolder(const std::string &path) {
        if (m_folders.insert(path).second) {
            m_records.write(Kind::Folder, path);
        }
    }

    const RecordWriter &m_records;
    std::set<std::string> m_folders;
};

/// A member of a package's outer archive.
std::string memberOf(std::string_view package, const std::string &name, size_t largest) {
    Reader reader(package, [](archive *outer) { ::archive_read_support_format_xar(outer); });
    while (archive_entry *const entry = reader.next()) {
        if (pathOf(entry) != name) {
            continue;
        }
        std::string contents;
        reader.read([&contents, largest](std::string_view piece) {
            contents += piece;
            if (contents.size() > largest) {
                throw damaged("holds more than a package does");
            }
        });
        return contents;
    }
    throw damaged("holds no \"" + name + '"');
}

std::string folderOfBundle(const std::string &description) {
    pugi::xml_document document;
    if (!document.load_buffer(description.data(), description.size())) {
        throw damaged("has a description that can't be read");
    }
    const std::string folder = document.child("pkg-info").attribute("install-location").as_string("/");
    return folder.ends_with('/') ? folder : folder + '/';
}

} // namespace

void readArchive(std::string_view archive, const RecordWriter &records) {
    const auto reader = [archive] {
        return Reader(archive, [](::archive *zip) { ::archive_read_support_format_zip_seekable(zip); });
    };
    const std::string bundle = bundleIn(reader());
    if (bundle.empty()) {
        throw damaged("is empty");
    }
    records.write(Kind::Text, bundle);
    BundleTeller(records).tell(reader(),
                               [](archive_entry *, const std::string &path) { return isInProgramFolder(path); });
}

void readPackage(std::string_view package, const RecordWriter &records) {
    const std::string folder = folderOfBundle(memberOf(package, "PackageInfo", kLargestDescription));
    const std::string contents = memberOf(package, "Payload", kLargestContents);
    const auto reader = [&contents] {
        return Reader(contents, [](archive *inner) {
            ::archive_read_support_format_cpio(inner);
            ::archive_read_support_filter_gzip(inner);
        });
    };
    records.write(Kind::Text, folder + bundleIn(reader()));
    BundleTeller(records).tell(reader(), [](archive_entry *entry, const std::string &) {
        return (::archive_entry_perm(entry) & S_IXUSR) != 0;
    });
}

void readVersion(std::string_view description, const RecordWriter &records) {
    const auto root = quillmark::PropertyListFormats().parse(std::string(description));
    records.write(Kind::Text, valueOf(root.dictionary(), "CFBundleVersion").text().value_or(""));
}

void requirePlainPath(const std::string &path, const std::string &source) {
    try {
        PlainPath::of('/' + path);
    } catch (const Failure &) {
        throw Failure(Status::DamagedPayload, source, "holds an entry that would leave its folder");
    }
}

} // namespace updateqm
