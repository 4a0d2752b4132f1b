#pragma once

#include "platform/values/ScalarText.h"
#include "platform/values/Value.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillmark {

/// The application's settings of this user: stored values over registered ones.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// Values that answer where nothing is stored. They are never written.
    virtual void registerDefaults(const Dictionary &values) = 0;
    /// The stored value, else the registered one, else nothing.
    virtual Value objectForKey(std::string_view key) = 0;
    /// The value when it is a text or a number (as text), else absent.
    std::optional<std::string> stringForKey(std::string_view key) {
        const Value value = objectForKey(key);
        return value.is<bool>() ? std::nullopt : scalarText(value);
    }
    /// Stores a value; nothing removes the key.
    virtual void setObject(std::string_view key, const Value &value) = 0;
    /// Writes what was set to disk.
    /// \returns false when the file could not be written; the values stay set and a later call tries again.
    virtual bool synchronize() = 0;
    /// Runs `change`, which looks at values and sets others that depend on them, and writes what it set. What it sees
    /// is read just before, and no other program writes in between. It sets values only; it does not write. \returns
    /// false when the file could not be read, and then `change` was not run, or when it could not be written, as above.
    virtual bool change(const std::function<void()> &change) = 0;
    /// What kept the file from being read or written when that was last tried, such as "can't be written (No space left
    /// on device)"; absent when nothing did. A file that is not there reads as empty.
    virtual std::optional<std::string> problem() const = 0;
    /// The file that they are kept in.
    virtual std::string file() const = 0;
    /// The place where a damaged preference file was put aside by this process; absent when none was.
    virtual std::optional<std::string> damagedFile() const = 0;
};

} // namespace quillmark
