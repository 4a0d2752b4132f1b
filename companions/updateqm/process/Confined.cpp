#include "process/Confined.h"

#include "process/Confinement.h"
#include "process/Failure.h"

#include <exception>
#include <fcntl.h>
#include <unistd.h>

namespace updateqm {

namespace {

constexpr std::chrono::seconds kPatience(90);

[[noreturn]] void run(int pipe, const std::function<void(const RecordWriter &records)> &work) {
    const RecordWriter records(confine(pipe));
    try {
        work(records);
        records.write(Record::Kind::End, {});
    } catch (const Failure &failure) {
        records.write(Record::Kind::Failure, failure.why(), static_cast<std::uint8_t>(failure.status()));
    } catch (const std::exception &exception) {
        records.write(Record::Kind::Failure, exception.what(), static_cast<std::uint8_t>(Status::DamagedPayload));
    }
    ::_exit(0);
}

} // namespace

Confined::Confined(std::string source, const std::function<void(const RecordWriter &records)> &work)
    : m_pipe(start(work)), m_records(m_pipe.get(), std::move(source), kPatience) {}

quillmark::Descriptor Confined::start(const std::function<void(const RecordWriter &records)> &work) {
    int ends[2] = {-1, -1};
    must(::pipe2(ends, O_CLOEXEC) == 0, "updateqm");
    quillmark::Descriptor reading(ends[0]);
    const quillmark::Descriptor writing(ends[1]);
    const pid_t child = ::fork();
    must(child >= 0, "updateqm");
    if (child == 0) {
        run(writing.get(), work);
    }
    return reading; // nobody waits for the child: it is taken over when this process ends, which is soon
}

} // namespace updateqm
