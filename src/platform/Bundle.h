#pragma once

#include "platform/values/Value.h"

#include <optional>
#include <string>
#include <string_view>

namespace quillmark {

/// An application bundle: a folder `NAME.app` with `Contents/Info.plist` and `Contents/Resources`.
class Bundle {
public:
    virtual ~Bundle() = default;

    /// The bundle's folder, absolute, without a trailing slash.
    virtual std::string path() const = 0;
    /// The folder that holds the bundle's resources.
    virtual std::string resourcePath() const = 0;
    /// The path of the resource `name.type`, absent when there is none. An empty type means none.
    virtual std::optional<std::string> pathForResource(std::string_view name, std::string_view type) const = 0;
    /// The bundle's Info.plist; empty when it is missing or unreadable.
    virtual Dictionary infoDictionary() const = 0;
    /// The text of `key` in the default string table of the user's language; the key itself when the table lacks it.
    virtual std::string localizedString(std::string_view key) const = 0;
};

/// The folder of a bundle's programs that are for its own use, at the bundle's path.
inline std::string helpersFolder(const std::string &bundlePath) { return bundlePath + "/Contents/Helpers"; }

} // namespace quillmark
