#include "platform/linux/LinuxBundle.h"

#include "platform/PropertyList.h"
#include "platform/QtText.h"
#include "platform/linux/ExecutablePath.h"

#include <QFile>
#include <unistd.h>

namespace quillmark {

LinuxBundle::LinuxBundle(QString path, QStringList languages, const PropertyList &propertyList)
    : m_path(std::move(path)), m_languages(std::move(languages)), m_propertyList(propertyList) {
    while (m_path.size() > 1 && m_path.endsWith(u'/')) {
        m_path.chop(1);
    }
    m_resourcePath =
        m_path.endsWith(u".app", Qt::CaseInsensitive) ? m_path + QStringLiteral("/Contents/Resources") : m_path;
}

QString LinuxBundle::pathForResource(const QString &name, const QString &type) const {
    if (name.isEmpty()) {
        return {};
    }
    const QString path = m_resourcePath + u'/' + name + (type.isEmpty() ? QString() : u'.' + type);
    return ::access(QFile::encodeName(path).constData(), F_OK) == 0 ? path : QString();
}

QVariantMap LinuxBundle::infoDictionary() const {
    const std::scoped_lock lock(m_mutex);
    if (!m_information) {
        m_information = m_propertyList.readDictionary(m_path + QStringLiteral("/Contents/Info.plist"));
    }
    return *m_information;
}

QString LinuxBundle::localizedString(const QString &key) const {
    const std::scoped_lock lock(m_mutex);
    if (!m_strings) {
        m_strings = readStringTable();
    }
    const QVariant text = m_strings->value(key);
    return text.typeId() == QMetaType::QString ? text.toString() : key;
}

QVariantMap LinuxBundle::readStringTable() const {
    const QStringList languages = m_languages + QStringList{QStringLiteral("en")};
    for (const QString &language : languages) {
        QVariantMap table = m_propertyList.readDictionary(m_resourcePath + u'/' + language +
                                                          QStringLiteral(".lproj/Localizable.strings"));
        if (!table.isEmpty()) {
            return table;
        }
    }
    return {};
}

QString LinuxBundle::pathOfRunningBundle() {
    const QString executable = qtText(executablePath());
    const auto parent = [](const QString &path) { return path.left(path.lastIndexOf(u'/')); };
    for (QString folder = parent(executable); !folder.isEmpty(); folder = parent(folder)) {
        if (folder.endsWith(u".app")) {
            return folder;
        }
    }
    return parent(executable);
}

QStringList LinuxBundle::preferredLanguages() {
    const auto locale = [] {
        for (const char *variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
            if (QString value = qEnvironmentVariable(variable); !value.isEmpty()) {
                return value;
            }
        }
        return QString();
    }();
    const QString language = locale.section(u'.', 0, 0).section(u'@', 0, 0);
    if (language.isEmpty() || language == u"C" || language == u"POSIX") {
        return {};
    }
    const QStringList wantedLanguages =
        qEnvironmentVariable("LANGUAGE").split(u':', Qt::SkipEmptyParts) + QStringList{language};
    QStringList languages;
    for (const QString &wanted : wantedLanguages) {
        // A name with a slash would lead out of the resources folder.
        if (!wanted.contains(u'/')) {
            languages << wanted << wanted.section(u'_', 0, 0);
        }
    }
    languages.removeDuplicates();
    return languages;
}

} // namespace quillmark
