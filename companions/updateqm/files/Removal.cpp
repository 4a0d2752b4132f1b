#include "files/Removal.h"

#include "files/Folder.h"
#include "process/Failure.h"

#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace updateqm {

namespace {

std::vector<std::string> readableEntriesOf(int folder) {
    try {
        return entriesOf(folder, {});
    } catch (const Failure &) {
        return {};
    }
}

void removeFile(int folder, const std::string &name, mode_t mode) {
    if (S_ISREG(mode) && (mode & (S_ISUID | S_ISGID)) != 0) {
        [[maybe_unused]] const int result = ::fchmodat(folder, name.c_str(), 0, 0); // it goes in any case
    }
    ::unlinkat(folder, name.c_str(), 0);
}

/// Files go, and folders move up to the top, where they are the next to be emptied.
class Emptying {
public:
    explicit Emptying(int top) : m_top(top), m_device(deviceOf(top)) {}

    /// \returns whether anything has changed.
    bool step() {
        m_hasMoved = false;
        for (const std::string &name : readableEntriesOf(m_top)) {
            remove(m_top, name);
        }
        return m_hasMoved;
    }

private:
    void remove(int folder, const std::string &name) {
        struct stat status {};
        if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            return;
        }
        if (!S_ISDIR(status.st_mode)) {
            removeFile(folder, name, status.st_mode);
        } else if (::unlinkat(folder, name.c_str(), AT_REMOVEDIR) != 0) {
            if (folder != m_top) {
                m_hasMoved = ::renameat(folder, name.c_str(), m_top, newName({}).c_str()) == 0 || m_hasMoved;
            } else {
                empty(name);
            }
        }
    }

    static dev_t deviceOf(int folder) {
        struct stat status {};
        return ::fstat(folder, &status) == 0 ? status.st_dev : dev_t{};
    }

    void empty(const std::string &name) {
        {
            const Descriptor folder(::openat(m_top, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
            if (!folder.isOpen() || deviceOf(folder.get()) != m_device) {
                return;
            }
            for (const std::string &entry : readableEntriesOf(folder.get())) {
                remove(folder.get(), entry);
            }
        }
        ::unlinkat(m_top, name.c_str(), AT_REMOVEDIR);
    }

    int m_top;
    dev_t m_device;
    bool m_hasMoved = false;
};

} // namespace

void removeContents(int folder) {
    Emptying emptying(folder);
    while (emptying.step()) {
    }
}

} // namespace updateqm
