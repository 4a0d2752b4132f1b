#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace updateqm {

/// What a confined process tells of an archive or a bundle, record after record. Whoever reads takes nothing for
/// granted: the process may be in the hands of who made the archive.
struct Record {
    enum class Kind : std::uint8_t {
        Text,   ///< what was asked for, such as a place or a version
        Folder, ///< text: a relative path
        File,   ///< text: a relative path; its contents follow
        Program,
        Contents, ///< text: a piece of the last file's contents
        Link,     ///< text: a relative path, a zero byte and where it leads to
        Failure,  ///< text: the end of the message; the status is that of the failure
        End,      ///< everything was told
    };
    Kind kind = Kind::End;
    std::uint8_t status = 0;
    std::string text;
};

constexpr size_t kLargestRecord = 65536; // bytes of text

/// Writes records to a pipe. The process ends when nobody reads them any more.
class RecordWriter {
public:
    explicit RecordWriter(int pipe) : m_pipe(pipe) {}
    void write(Record::Kind kind, std::string_view text, std::uint8_t status = 0) const;

private:
    int m_pipe;
};

/// Reads records from a pipe.
class RecordReader {
public:
    /// \param source what the records tell of, for messages. \param patience how long all of them may take.
    RecordReader(int pipe, std::string source, std::chrono::seconds patience);

    /// Raises a Failure for one that is told, for what is not a record, for an end before the last one, and when it
    /// takes too long.
    Record next();

private:
    void read(char *bytes, size_t size);

    int m_pipe;
    std::string m_source;
    std::chrono::steady_clock::time_point m_end;
};

} // namespace updateqm
