#include "platform/linux/LinuxBundle.h"

#include "platform/PropertyList.h"
#include "platform/files/Path.h"
#include "platform/linux/ExecutablePath.h"
#include "platform/process/EnvironmentVariable.h"
#include "platform/values/Pieces.h"

#include <algorithm>
#include <strings.h>
#include <unistd.h>

namespace quillmark {

namespace {

bool isNamedAsBundle(const std::string &path) {
    constexpr std::string_view kEnding = ".app";
    return path.size() >= kEnding.size() &&
           ::strcasecmp(path.c_str() + path.size() - kEnding.size(), kEnding.data()) == 0;
}

} // namespace

LinuxBundle::LinuxBundle(std::string_view path, std::vector<std::string> languages, const PropertyList &propertyList)
    : m_path(withoutEndingSlashes(path)),
      m_resourcePath(isNamedAsBundle(m_path) ? m_path + "/Contents/Resources" : m_path),
      m_languages(std::move(languages)), m_propertyList(propertyList) {}

std::optional<std::string> LinuxBundle::pathForResource(std::string_view name, std::string_view type) const {
    if (name.empty()) {
        return std::nullopt;
    }
    std::string path = m_resourcePath + '/' + std::string(name);
    if (!type.empty()) {
        path.append(".").append(type);
    }
    return ::access(path.c_str(), F_OK) == 0 ? std::optional(path) : std::nullopt;
}

Dictionary LinuxBundle::infoDictionary() const {
    const std::scoped_lock lock(m_mutex);
    if (!m_information) {
        m_information = m_propertyList.readDictionary(m_path + "/Contents/Info.plist");
    }
    return *m_information;
}

std::string LinuxBundle::localizedString(std::string_view key) const {
    const std::scoped_lock lock(m_mutex);
    if (!m_strings) {
        m_strings = readStringTable();
    }
    return valueOf(*m_strings, key).text().value_or(std::string(key));
}

Dictionary LinuxBundle::readStringTable() const {
    std::vector<std::string> languages = m_languages;
    languages.emplace_back("en");
    for (const std::string &language : languages) {
        Dictionary table =
            m_propertyList.readDictionary(m_resourcePath + '/' + language + ".lproj/Localizable.strings");
        if (!table.empty()) {
            return table;
        }
    }
    return {};
}

std::string LinuxBundle::pathOfRunningBundle() {
    const std::string executable = executablePath().value_or("");
    const auto parent = [](const std::string &path) { return path.substr(0, path.rfind('/')); };
    for (std::string folder = parent(executable); !folder.empty(); folder = parent(folder)) {
        if (folder.ends_with(".app")) {
            return folder;
        }
    }
    return parent(executable);
}

std::vector<std::string> LinuxBundle::preferredLanguages() {
    std::string locale;
    for (const char *name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (locale = environmentVariable(name); !locale.empty()) {
            break;
        }
    }
    const std::string language = locale.substr(0, locale.find_first_of(".@"));
    if (language.empty() || language == "C" || language == "POSIX") {
        return {};
    }
    std::vector<std::string> languages;
    const auto add = [&languages](std::string_view name) {
        if (std::find(languages.begin(), languages.end(), name) == languages.end()) {
            languages.emplace_back(name);
        }
    };
    const std::string wantedLanguages = environmentVariable("LANGUAGE") + ':' + language;
    for (const std::string_view wanted : pieces(wantedLanguages, ':')) {
        // A name with a slash would lead out of the resources folder.
        if (!wanted.empty() && wanted.find('/') == std::string_view::npos) {
            add(wanted);
            add(wanted.substr(0, wanted.find('_')));
        }
    }
    return languages;
}

} // namespace quillmark
