#pragma once

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace updateqm {

/// Exit statuses: one for each thing that can go wrong. 0 is complete success, and nothing else is.
enum class Status {
    WrongCommandLine = 64,
    NotAdministrator = 65, ///< not installed as it must be, and not started by the administrator
    UnreadablePayload =
        66,              ///< payload or signature: missing, no regular file, too large, or the caller may not read it
    WrongSignature = 67, ///< not the vendor's, or not of this payload
    WrongPayload = 68,   ///< the vendor's, but something else than what it is given for
    OldPayload = 69,     ///< older than what is installed, or than this tool
    WrongPlace = 70,     ///< nothing may be installed there
    UnsafePlace = 71,    ///< a link or somebody else's file is in the way, or somebody else could move it away
    DamagedPayload = 72, ///< an archive or a package that can't be unpacked
    CannotWrite = 73,    ///< the disk is full, read-only or broken; what was there before is there still
    Busy = 74,           ///< another run takes too long
};

/// Ends a command. The message is "WHAT: WHY" and becomes the one line on standard error.
class Failure : public std::runtime_error {
public:
    Failure(Status status, const std::string &what, const std::string &why)
        : std::runtime_error(what + ": " + why), m_status(status), m_why(why) {}

    Status status() const { return m_status; }
    const std::string &why() const { return m_why; }

private:
    Status m_status;
    std::string m_why;
};

/// The failure of a system call that has just set `errno`.
inline Failure systemFailure(Status status, const std::string &what) {
    return {status, what, std::strerror(errno)}; // NOLINT(concurrency-mt-unsafe): there is one thread
}

/// Raises the failure of a system call that was not done.
inline void must(bool isDone, const std::string &what, Status status = Status::CannotWrite) {
    if (!isDone) {
        throw systemFailure(status, what);
    }
}

} // namespace updateqm
