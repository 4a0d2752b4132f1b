#pragma once

#include <QByteArray>
#include <archive.h>
#include <archive_entry.h>
#include <memory>
#include <string>

namespace updateqm {

/// Reads an archive in memory, entry after entry. Every problem of the archive is a Failure that names its source.
class Reader {
public:
    /// \param allowFormats lets the reader understand the formats that are wanted, and no others.
    template <class AllowFormats>
    Reader(const QByteArray &bytes, std::string source, const AllowFormats &allowFormats)
        : m_source(std::move(source)), m_archive(::archive_read_new(), ::archive_read_free) {
        allowFormats(m_archive.get());
        must(::archive_read_open_memory(m_archive.get(), bytes.constData(), static_cast<size_t>(bytes.size())));
    }

    /// \returns null at the end.
    archive_entry *next() {
        archive_entry *entry = nullptr;
        const int status = ::archive_read_next_header(m_archive.get(), &entry);
        if (status == ARCHIVE_EOF) {
            return nullptr;
        }
        must(status);
        return entry;
    }

    /// The current entry's contents, which must not be larger than that.
    QByteArray contents(qint64 largest);

    archive *get() const { return m_archive.get(); }

    /// Raises the Failure for a status that is not good.
    void must(int status) const;

private:
    std::string m_source;
    std::unique_ptr<archive, int (*)(archive *)> m_archive;
};

/// The path of an entry without a leading "./" and a trailing slash. Raises a Failure for one that could leave the
/// folder.
std::string pathOf(archive_entry *entry, const std::string &source);

} // namespace updateqm
