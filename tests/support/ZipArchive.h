#pragma once

#include <QByteArray>
#include <QtEndian>
#include <gtest/gtest.h>
#include <optional>
#include <vector>
#include <zlib.h>

namespace quillmark::test {

/// One entry of an archive; what is given instead of being computed may be a lie.
struct ZipEntry {
    QByteArray name;
    QByteArray contents;
    quint16 method = 8; ///< 0 stored, 8 deflated; contents of any other method stand as they are
    quint16 flags = 0;
    quint32 externalAttributes = 0;
    std::optional<quint32> checksum{};
    std::optional<quint32> packedSize{};
    std::optional<quint32> size{};
    QByteArray extra{}; ///< of the directory
};

/// Writes archives, malformed ones too.
class ZipArchive {
public:
    ZipArchive() = default;
    ZipArchive(std::initializer_list<ZipEntry> entries) {
        for (const ZipEntry &entry : entries) {
            add(entry);
        }
    }

    void add(const ZipEntry &entry) {
        const QByteArray packed = entry.method == 8 ? deflated(entry.contents) : entry.contents;
        const auto offset = static_cast<quint32>(m_body.size());
        QByteArray common;
        append<quint16>(common, 20, entry.flags, entry.method, 0, 0x21); // version, flags, method, time, day
        append<quint32>(common, entry.checksum.value_or(checksum(entry.contents)),
                        entry.packedSize.value_or(static_cast<quint32>(packed.size())),
                        entry.size.value_or(static_cast<quint32>(entry.contents.size())));
        append<quint16>(common, static_cast<quint16>(entry.name.size()));

        m_body += QByteArray("PK\3\4") + common;
        append<quint16>(m_body, 0);
        m_body += entry.name + packed;

        m_directory += "PK\1\2";
        append<quint16>(m_directory, 0x0314); // made on Unix
        m_directory += common;
        append<quint16>(m_directory, static_cast<quint16>(entry.extra.size()), 0, 0, 0);
        append<quint32>(m_directory, entry.externalAttributes, offset);
        m_directory += entry.name + entry.extra;
        ++m_count;
    }

    /// \param count the number of entries that the archive says it has
    QByteArray bytes(std::optional<quint16> count = {}) const {
        QByteArray end("PK\5\6");
        const quint16 told = count.value_or(m_count);
        append<quint16>(end, 0, 0, told, told);
        append<quint32>(end, static_cast<quint32>(m_directory.size()), static_cast<quint32>(m_body.size()));
        append<quint16>(end, 0);
        return m_body + m_directory + end;
    }

private:
    template <class Number, class... Values>
    static void append(QByteArray &bytes, Values... values) {
        for (const Number value : {static_cast<Number>(values)...}) {
            const Number little = qToLittleEndian(value);
            bytes.append(reinterpret_cast<const char *>(&little), sizeof little);
        }
    }
    static quint32 checksum(const QByteArray &bytes) {
        return static_cast<quint32>(
            crc32(0, reinterpret_cast<const Bytef *>(bytes.constData()), static_cast<uInt>(bytes.size())));
    }
    static QByteArray deflated(const QByteArray &bytes) {
        z_stream stream{};
        EXPECT_EQ(deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY), Z_OK);
        QByteArray result(static_cast<qsizetype>(deflateBound(&stream, static_cast<uLong>(bytes.size()))),
                          Qt::Uninitialized);
        stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(bytes.constData()));
        stream.avail_in = static_cast<uInt>(bytes.size());
        stream.next_out = reinterpret_cast<Bytef *>(result.data());
        stream.avail_out = static_cast<uInt>(result.size());
        EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
        result.truncate(static_cast<qsizetype>(stream.total_out));
        deflateEnd(&stream);
        return result;
    }

    QByteArray m_body;
    QByteArray m_directory;
    quint16 m_count = 0;
};

} // namespace quillmark::test
