#include "platform/linux/LinuxUserDefaults.h"

#include "platform/Clock.h"
#include "platform/Path.h"
#include "platform/PropertyList.h"
#include "platform/ReadFile.h"
#include "platform/linux/FolderLock.h"

#include <QDir>
#include <QFile>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <unistd.h>

namespace quillmark {

namespace {

void apply(const QVariantMap &changes, QVariantMap &values) {
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        if (change.value().isValid()) {
            values.insert(change.key(), change.value());
        } else {
            values.remove(change.key());
        }
    }
}

} // namespace

LinuxUserDefaults::LinuxUserDefaults(QString path, const PropertyList &propertyList, Clock &clock)
    : m_path(std::move(path)), m_propertyList(propertyList), m_clock(clock) {}

void LinuxUserDefaults::registerDefaults(const QVariantMap &values) {
    const std::scoped_lock lock(m_mutex);
    apply(values, m_registered);
}

QVariant LinuxUserDefaults::objectForKey(const QString &key) {
    const std::scoped_lock lock(m_mutex);
    if (m_fileState == FileState::Unread) {
        read();
    }
    if (const auto change = m_changes.constFind(key); change != m_changes.constEnd()) {
        return change->isValid() ? *change : m_registered.value(key);
    }
    return m_stored.value(key, m_registered.value(key));
}

void LinuxUserDefaults::setObject(const QString &key, const QVariant &value) {
    const std::scoped_lock lock(m_mutex);
    m_changes.insert(key, value);
}

QString LinuxUserDefaults::damagedFile() const {
    const std::scoped_lock lock(m_mutex);
    return m_damagedFile;
}

void LinuxUserDefaults::read() {
    m_stored.clear();
    m_fileState = FileState::Usable;
    auto contents = readRegularFile(m_path, PropertyList::kMaximumMemory);
    if (const auto *failure = std::get_if<ReadError>(&contents)) {
        m_fileState = failure->error == ENOENT ? FileState::Usable : FileState::Unreadable;
        return;
    }
    const QVariant root = m_propertyList.parse(std::get<QByteArray>(std::move(contents)));
    if (root.typeId() == QMetaType::QVariantMap) {
        m_stored = root.toMap();
        return;
    }
    const QString aside = m_path + QStringLiteral(".damaged");
    if (::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(aside).constData()) == 0) {
        m_damagedFile = aside;
    } else {
        m_fileState = FileState::Unreadable;
    }
}

bool LinuxUserDefaults::synchronize() {
    const std::scoped_lock mutexLock(m_mutex);
    if (m_changes.isEmpty()) {
        read();
        return m_fileState == FileState::Usable;
    }
    const QString folder = deletingLastPathComponent(m_path);
    if (!QDir().mkpath(folder)) {
        return false;
    }
    const Descriptor lock = lockedFolder(folder, m_clock);
    if (!lock.isOpen()) {
        return false;
    }
    read();
    QVariantMap values = m_stored;
    apply(m_changes, values);
    if (m_fileState != FileState::Usable || !write(values)) {
        return false;
    }
    m_stored = std::move(values);
    m_changes.clear();
    return true;
}

bool LinuxUserDefaults::write(const QVariantMap &values) const {
    const auto document = m_propertyList.toXml(values);
    if (!document) {
        return false;
    }
    // One name for every writer, since only the lock's holder writes: what a killed one left is replaced by the next.
    QFile file(m_path + QStringLiteral(".new"));
    const QByteArray name = QFile::encodeName(file.fileName());
    std::error_code obstacle;
    std::filesystem::remove_all(name.constData(), obstacle);
    const bool isReplaced = file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered,
                                      QFile::ReadOwner | QFile::WriteOwner) &&
                            file.write(*document) == document->size() && ::fsync(file.handle()) == 0 &&
                            ::rename(name.constData(), QFile::encodeName(m_path).constData()) == 0;
    if (!isReplaced) {
        file.remove();
    }
    return isReplaced;
}

} // namespace quillmark
