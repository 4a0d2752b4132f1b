#pragma once

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <string>

namespace quillmark {

/// A file that is longer is left, and a new one begun. (50 MiB)
inline constexpr std::int64_t kMaxLogFileLength = 52428800;

/// An append-only file that threads write to while another one puts a new file in its place.
///
/// Nobody waits for writers: the stream lives as long as the process, and a switch exchanges the descriptor beneath it.
/// Whole lines stay whole, since stdio serialises the calls on one stream. open() and close() are one thread's at a
/// time.
class LogFile {
public:
    constexpr LogFile() = default;
    LogFile(const LogFile &) = delete;
    LogFile &operator=(const LogFile &) = delete;
    ~LogFile() = default;

    /// Closes the current file and opens another one for appending, which is made when it is missing. A link is not
    /// followed, and nothing but a regular file is written to.
    /// \returns false when that fails; then no file is open, and errno says why.
    bool open(const std::string &path);
    void close();

    /// The stream to write to; null while no file is open.
    FILE *stream() const { return m_current.load(std::memory_order_acquire); }

private:
    bool replaceDescriptor(int descriptor);

    std::atomic<FILE *> m_current{nullptr};
    FILE *m_stream = nullptr; ///< made by the first open(), then kept
};

/// The length of the stream's file, of which only the lower 32 bits are told; 0xFFFFFFFF for a null stream.
std::uint32_t _fileLength(FILE *stream);

/// Whether the stream's file is longer than a log file may be.
bool hasGrownTooLong(FILE *stream);

} // namespace quillmark
