#pragma once

#include "platform/Bundle.h"

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace quillmark {

class PropertyList;

class LinuxBundle final : public Bundle {
public:
    /// \param path the bundle's folder. \param languages the user's languages ("de_AT", "de"), the preferred one first.
    LinuxBundle(std::string_view path, std::vector<std::string> languages, const PropertyList &propertyList);

    std::string path() const override { return m_path; }
    std::string resourcePath() const override { return m_resourcePath; }
    std::optional<std::string> pathForResource(std::string_view name, std::string_view type) const override;
    Dictionary infoDictionary() const override;
    std::string localizedString(std::string_view key) const override;

    /// The bundle that holds the running executable: the nearest folder above it whose name ends in ".app", else the
    /// executable's own folder.
    static std::string pathOfRunningBundle();
    /// The languages that the environment asks for, as gettext reads it: LANGUAGE, LC_ALL, LC_MESSAGES, LANG.
    static std::vector<std::string> preferredLanguages();

private:
    Dictionary readStringTable() const;

    const std::string m_path;
    const std::string m_resourcePath;
    std::vector<std::string> m_languages;
    const PropertyList &m_propertyList;

    mutable std::mutex m_mutex;
    mutable std::optional<Dictionary> m_information;
    mutable std::optional<Dictionary> m_strings;
};

} // namespace quillmark
