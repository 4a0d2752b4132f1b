#pragma once

#include <sys/types.h>

namespace updateqm {

/// Who started this tool, and with whose rights the process acts. It begins with the caller's, so that what it reads
/// for him is what he may read; he may end it then, and it counts as a process of his. For what only the administrator
/// may do it becomes the administrator's: the caller can neither signal it nor look into it, and what it makes is not
/// his.
class Caller {
public:
    /// Raises a Failure when the tool has not got the administrator's rights.
    static void start();
    static uid_t user();

    static void becomeAdministrator();
    /// Takes becomeAdministrator() back.
    static void becomeCaller();
    /// There is no way back to the administrator's rights.
    static void becomeCallerForGood();

    /// There is no way back, and there are no rights at all: no user's, and no file's. A process that is the caller's
    /// for good stays his.
    static void becomeNobodyForGood();
};

} // namespace updateqm
