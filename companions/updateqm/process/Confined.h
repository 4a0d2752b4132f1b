#pragma once

#include "platform/process/Descriptor.h"
#include "process/Records.h"

#include <functional>
#include <string>

namespace updateqm {

/// A process that takes something apart for this one, which reads what it tells.
class Confined {
public:
    /// \param work runs there; a Failure that it raises, or any other exception, is told. \param source what is taken
    /// apart, for messages.
    Confined(std::string source, const std::function<void(const RecordWriter &records)> &work);
    Confined(const Confined &) = delete;
    Confined &operator=(const Confined &) = delete;
    /// It ends when nobody reads any more.
    ~Confined() = default;

    Record next() { return m_records.next(); }

private:
    static quillmark::Descriptor start(const std::function<void(const RecordWriter &records)> &work);

    quillmark::Descriptor m_pipe;
    RecordReader m_records;
};

} // namespace updateqm
