#pragma once

#include "platform/Bundle.h"

#include <QStringList>
#include <mutex>
#include <optional>

namespace quillmark {

class PropertyList;

class LinuxBundle final : public Bundle {
public:
    /// \param path the bundle's folder. \param languages the user's languages ("de_AT", "de"), the preferred one first.
    LinuxBundle(QString path, QStringList languages, const PropertyList &propertyList);

    QString path() const override { return m_path; }
    QString resourcePath() const override { return m_resourcePath; }
    QString pathForResource(const QString &name, const QString &type) const override;
    QVariantMap infoDictionary() const override;
    QString localizedString(const QString &key) const override;

    /// The bundle that holds the running executable: the nearest folder above it whose name ends in ".app", else the
    /// executable's own folder.
    static QString pathOfRunningBundle();
    /// The languages that the environment asks for, as gettext reads it: LANGUAGE, LC_ALL, LC_MESSAGES, LANG.
    static QStringList preferredLanguages();

private:
    QVariantMap readStringTable() const;

    QString m_path;
    QString m_resourcePath;
    QStringList m_languages;
    const PropertyList &m_propertyList;

    mutable std::mutex m_mutex;
    mutable std::optional<QVariantMap> m_information;
    mutable std::optional<QVariantMap> m_strings;
};

} // namespace quillmark
