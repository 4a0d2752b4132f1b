#pragma once

#include <QString>
#include <QVariantMap>

namespace quillmark {

/// An application bundle: a folder `NAME.app` with `Contents/Info.plist` and `Contents/Resources`.
class Bundle {
public:
    virtual ~Bundle() = default;

    /// The bundle's folder, absolute, without a trailing slash.
    virtual QString path() const = 0;
    /// The folder that holds the bundle's resources.
    virtual QString resourcePath() const = 0;
    /// The path of the resource `name.type`, or a null string when there is none. An empty type means none.
    virtual QString pathForResource(const QString &name, const QString &type) const = 0;
    /// The bundle's Info.plist; empty when it is missing or unreadable.
    virtual QVariantMap infoDictionary() const = 0;
    /// The text of `key` in the default string table of the user's language; the key itself when the table lacks it.
    virtual QString localizedString(const QString &key) const = 0;
};

/// The folder of a bundle's programs that are for its own use, at the bundle's path.
inline QString helpersFolder(const QString &bundlePath) { return bundlePath + QStringLiteral("/Contents/Helpers"); }

} // namespace quillmark
