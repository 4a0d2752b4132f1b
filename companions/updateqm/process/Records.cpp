#include "process/Records.h"

#include "process/Failure.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace updateqm {

namespace {

/// As it lies in the pipe, before the text.
struct Header {
    std::uint32_t size;
    Record::Kind kind;
    std::uint8_t status;
};

bool mayBeTold(std::uint8_t status) {
    return status == static_cast<std::uint8_t>(Status::WrongPayload) ||
           status == static_cast<std::uint8_t>(Status::DamagedPayload);
}

} // namespace

void RecordWriter::write(Record::Kind kind, std::string_view text, std::uint8_t status) const {
    Header header{};
    header.size = static_cast<std::uint32_t>(std::min(text.size(), kLargestRecord));
    header.kind = kind;
    header.status = status;
    std::string bytes(sizeof header, '\0');
    std::memcpy(bytes.data(), &header, sizeof header);
    bytes += text.substr(0, header.size);
    for (size_t done = 0; done < bytes.size();) {
        const ssize_t count = ::write(m_pipe, bytes.data() + done, bytes.size() - done);
        if (count <= 0) {
            ::_exit(1);
        }
        done += static_cast<size_t>(count);
    }
}

RecordReader::RecordReader(int pipe, std::string source, std::chrono::seconds patience)
    : m_pipe(pipe), m_source(std::move(source)), m_end(std::chrono::steady_clock::now() + patience) {}

Record RecordReader::next() {
    std::array<char, sizeof(Header)> bytes{};
    read(bytes.data(), bytes.size());
    Header header{};
    std::memcpy(&header, bytes.data(), sizeof header);
    if (header.kind > Record::Kind::End || header.size > kLargestRecord) {
        throw Failure(Status::DamagedPayload, m_source, "can't be taken apart");
    }
    Record record{header.kind, header.status, std::string(header.size, '\0')};
    read(record.text.data(), record.text.size());
    if (record.kind == Record::Kind::Failure) {
        throw Failure(mayBeTold(record.status) ? static_cast<Status>(record.status) : Status::DamagedPayload, m_source,
                      record.text);
    }
    return record;
}

void RecordReader::read(char *bytes, size_t size) {
    while (size > 0) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(m_end - std::chrono::steady_clock::now()).count();
        pollfd readable{m_pipe, POLLIN, 0};
        const int isReadable = left > 0 ? ::poll(&readable, 1, static_cast<int>(left)) : 0;
        if (isReadable < 0 && errno == EINTR) {
            continue;
        }
        const ssize_t count = isReadable > 0 ? ::read(m_pipe, bytes, size) : 0;
        if (count <= 0) {
            throw Failure(Status::DamagedPayload, m_source, isReadable > 0 ? "can't be taken apart" : "takes too long");
        }
        bytes += count;
        size -= static_cast<size_t>(count);
    }
}

} // namespace updateqm
