#pragma once

#include "platform/UserDefaults.h"
#include "platform/process/Descriptor.h"

#include <mutex>
#include <optional>
#include <string>

namespace quillmark {

class Bundle;
class Clock;
class PropertyList;

/// Keeps the settings in one XML property list, which every writer replaces as a whole while it holds a lock that
/// nobody but the user can take. What another process stored meanwhile survives; of two writers of one key the later
/// one wins.
///
/// A file that is not a property list is renamed to NAME.damaged at the first look, replacing an earlier one. A file
/// that can't be read for another reason is left alone, and so is never overwritten.
///
/// What a change() set and could not write is tried again by the next writer, unless another program has changed the
/// same key by then: that would be lost.
class LinuxUserDefaults final : public UserDefaults {
public:
    /// The property list of a bundle's settings, which its identifier names.
    static std::string pathFor(const Bundle &bundle);

    /// \param path the property list; its folder is created with the first synchronize().
    LinuxUserDefaults(std::string path, const PropertyList &propertyList, Clock &clock);

    void registerDefaults(const Dictionary &values) override;
    Value objectForKey(std::string_view key) override;
    void setObject(std::string_view key, const Value &value) override;
    bool synchronize() override;
    bool change(const std::function<void()> &change) override;
    std::optional<std::string> problem() const override;
    std::string file() const override { return m_path; }
    std::optional<std::string> damagedFile() const override;

private:
    enum class FileState { Unread, Usable, Damaged, Unreadable };

    /// \returns an open descriptor that holds the lock, or notes the problem.
    Descriptor lock();
    FileState load();
    /// Reads the file, without the lock unless it is damaged.
    void read();
    /// Reads the file under the lock, and sets a damaged one aside. \returns whether it may be replaced.
    bool readForChange();
    /// Forgets what is no longer based on what is stored. \returns whether there was none of that.
    bool dropOutdatedChanges();
    bool writeChanges();
    /// \returns 0 or an `errno`.
    int write(const std::string &document) const;
    void setProblem(const char *what, int error);

    const std::string m_path;
    const PropertyList &m_propertyList;
    Clock &m_clock;

    mutable std::recursive_mutex m_mutex; // recursive, since a change() asks and sets
    FileState m_fileState = FileState::Unread;
    Dictionary m_registered;
    Dictionary m_stored;
    Dictionary m_changes; ///< set and not yet written; nothing stands for a removal
    Dictionary m_bases;   ///< for those of them that a change() set, what was stored when it did
    bool m_isChanging = false;
    std::optional<std::string> m_damagedFile;
    std::optional<std::string> m_problem;
};

} // namespace quillmark
