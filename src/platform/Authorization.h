#pragma once

#include <QByteArray>
#include <QList>
#include <memory>

namespace quillmark {

/// The communications pipe of a privileged program.
class CommunicationsPipe {
public:
    CommunicationsPipe() = default;
    CommunicationsPipe(const CommunicationsPipe &) = delete;
    CommunicationsPipe &operator=(const CommunicationsPipe &) = delete;
    virtual ~CommunicationsPipe() = default;

    /// Waits for the program's output and reads at most `size` bytes of it. \returns their number; 0 at the end.
    virtual qint64 read(char *buffer, qint64 size) = 0;
};

/// Programs with administrator rights, as the platform's authorization services run them. Statuses are theirs; 0 is
/// success.
class Authorization {
public:
    Authorization() = default;
    Authorization(const Authorization &) = delete;
    Authorization &operator=(const Authorization &) = delete;
    virtual ~Authorization() = default;

    /// Starts a program with the rights of this authorization.
    /// \param pipe receives the program's standard output, when it is not null.
    virtual qint32 executeWithPrivileges(const QByteArray &path, const QList<QByteArray> &arguments,
                                         std::unique_ptr<CommunicationsPipe> *pipe) = 0;
};

} // namespace quillmark
