#pragma once

#include "platform/UserDefaults.h"

#include <mutex>

namespace quillmark {

class Clock;
class PropertyList;

/// Keeps the settings in one XML property list, which every writer replaces as a whole while it holds a lock on its
/// folder. What another process stored meanwhile survives; of two writers of one key the later one wins.
///
/// A file that is no property list is renamed to NAME.damaged at the first look, replacing an earlier one. A file that
/// can't be read for another reason is left alone, and so is never overwritten.
class LinuxUserDefaults final : public UserDefaults {
public:
    /// \param path the property list; its folder is created with the first synchronize().
    LinuxUserDefaults(QString path, const PropertyList &propertyList, Clock &clock);

    void registerDefaults(const QVariantMap &values) override;
    QVariant objectForKey(const QString &key) override;
    void setObject(const QString &key, const QVariant &value) override;
    bool synchronize() override;
    QString file() const override { return m_path; }
    QString damagedFile() const override;

private:
    enum class FileState { Unread, Usable, Unreadable };

    void read();
    bool write(const QVariantMap &values) const;

    const QString m_path;
    const PropertyList &m_propertyList;
    Clock &m_clock;

    mutable std::mutex m_mutex;
    FileState m_fileState = FileState::Unread;
    QVariantMap m_registered;
    QVariantMap m_stored;
    QVariantMap m_changes; ///< set and not yet written; an invalid value stands for a removal
    QString m_damagedFile;
};

} // namespace quillmark
