#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <optional>
#include <string>
#include <zlib.h>

namespace quillmark::test {

/// One entry of an archive; what is given instead of being computed may be a lie.
struct ZipEntry {
    std::string name;
    std::string contents;
    std::uint16_t method = 8; ///< 0 stored, 8 deflated; contents of any other method stand as they are
    std::uint16_t flags = 0;
    std::uint32_t externalAttributes = 0;
    std::optional<std::uint32_t> checksum{};
    std::optional<std::uint32_t> packedSize{};
    std::optional<std::uint32_t> size{};
    std::string extra{}; ///< of the directory
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
        const std::string packed = entry.method == 8 ? deflated(entry.contents) : entry.contents;
        const auto offset = static_cast<std::uint32_t>(m_body.size());
        std::string common;
        append<std::uint16_t>(common, 20, entry.flags, entry.method, 0, 0x21); // version, flags, method, time, day
        append<std::uint32_t>(common, entry.checksum.value_or(checksum(entry.contents)),
                              entry.packedSize.value_or(static_cast<std::uint32_t>(packed.size())),
                              entry.size.value_or(static_cast<std::uint32_t>(entry.contents.size())));
        append<std::uint16_t>(common, static_cast<std::uint16_t>(entry.name.size()));

        m_body += "PK\3\4" + common;
        append<std::uint16_t>(m_body, 0);
        m_body += entry.name + packed;

        m_directory += "PK\1\2";
        append<std::uint16_t>(m_directory, 0x0314); // made on Unix
        m_directory += common;
        append<std::uint16_t>(m_directory, static_cast<std::uint16_t>(entry.extra.size()), 0, 0, 0);
        append<std::uint32_t>(m_directory, entry.externalAttributes, offset);
        m_directory += entry.name + entry.extra;
        ++m_count;
    }

    /// \param count the number of entries that the archive says it has
    std::string bytes(std::optional<std::uint16_t> count = {}) const {
        std::string end = "PK\5\6";
        const std::uint16_t told = count.value_or(m_count);
        append<std::uint16_t>(end, 0, 0, told, told);
        append<std::uint32_t>(end, static_cast<std::uint32_t>(m_directory.size()),
                              static_cast<std::uint32_t>(m_body.size()));
        append<std::uint16_t>(end, 0);
        return m_body + m_directory + end;
    }

private:
    template <class Number, class... Values>
    static void append(std::string &bytes, Values... values) {
        for (const Number value : {static_cast<Number>(values)...}) {
            for (size_t byte = 0; byte < sizeof value; ++byte) {
                bytes += static_cast<char>(value >> 8 * byte);
            }
        }
    }
    static std::uint32_t checksum(const std::string &bytes) {
        return static_cast<std::uint32_t>(
            crc32(0, reinterpret_cast<const Bytef *>(bytes.data()), static_cast<uInt>(bytes.size())));
    }
    static std::string deflated(const std::string &bytes) {
        z_stream stream{};
        EXPECT_EQ(deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY), Z_OK);
        std::string result(deflateBound(&stream, bytes.size()), '\0');
        stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(bytes.data()));
        stream.avail_in = static_cast<uInt>(bytes.size());
        stream.next_out = reinterpret_cast<Bytef *>(result.data());
        stream.avail_out = static_cast<uInt>(result.size());
        EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
        result.resize(stream.total_out);
        deflateEnd(&stream);
        return result;
    }

    std::string m_body;
    std::string m_directory;
    std::uint16_t m_count = 0;
};

} // namespace quillmark::test
