#include "platform/linux/LinuxUserDefaults.h"

#include "platform/Clock.h"
#include "platform/Path.h"
#include "platform/PropertyList.h"
#include "platform/ReadFile.h"
#include "platform/linux/LockFile.h"

#include <QDir>
#include <QFile>
#include <QScopedValueRollback>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
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
    if (m_isChanging) {
        m_bases.insert(key, m_stored.value(key));
    } else {
        m_bases.remove(key);
    }
}

QString LinuxUserDefaults::damagedFile() const {
    const std::scoped_lock lock(m_mutex);
    return m_damagedFile;
}

QString LinuxUserDefaults::problem() const {
    const std::scoped_lock lock(m_mutex);
    return m_problem;
}

bool LinuxUserDefaults::synchronize() {
    const std::scoped_lock mutexLock(m_mutex);
    if (m_changes.isEmpty()) {
        read();
        return m_fileState == FileState::Usable;
    }
    const Descriptor held = lock();
    return held.isOpen() && readForChange() && dropOutdatedChanges() && writeChanges();
}

bool LinuxUserDefaults::change(const std::function<void()> &change) {
    const std::scoped_lock mutexLock(m_mutex);
    const Descriptor held = lock();
    if (!held.isOpen() || !readForChange()) {
        return false;
    }
    dropOutdatedChanges();
    {
        const QScopedValueRollback isChanging(m_isChanging, true);
        change();
    }
    if (m_changes.isEmpty()) {
        m_problem.clear(); // what was dropped is of no concern to this change
        return true;
    }
    return writeChanges();
}

Descriptor LinuxUserDefaults::lock() {
    const QString folder = deletingLastPathComponent(m_path);
    const bool isThere = QDir().mkpath(folder);
    const QString lockFile = folder + QStringLiteral("/.%1.lock").arg(lastPathComponent(m_path));
    Descriptor held = isThere ? lockedFile(lockFile, m_clock) : Descriptor();
    if (!held.isOpen()) {
        setProblem("can't be written", errno);
    }
    return held;
}

LinuxUserDefaults::FileState LinuxUserDefaults::load() {
    m_stored.clear();
    m_problem.clear();
    auto contents = readRegularFile(m_path, PropertyList::kMaximumMemory);
    if (const auto *failure = std::get_if<ReadError>(&contents)) {
        if (failure->error == ENOENT) {
            return FileState::Usable;
        }
        setProblem("can't be read", failure->error);
        return FileState::Unreadable;
    }
    const QVariant root = m_propertyList.parse(std::get<QByteArray>(std::move(contents)));
    if (root.typeId() != QMetaType::QVariantMap) {
        return FileState::Damaged;
    }
    m_stored = root.toMap();
    return FileState::Usable;
}

void LinuxUserDefaults::read() {
    m_fileState = load();
    if (m_fileState == FileState::Damaged) {
        const Descriptor held = lock();
        m_fileState = FileState::Unreadable;
        if (held.isOpen()) {
            readForChange();
        }
    }
}

bool LinuxUserDefaults::readForChange() {
    m_fileState = load(); // again: another program may have replaced what was damaged a moment ago
    if (m_fileState == FileState::Damaged) {
        const QString aside = m_path + QStringLiteral(".damaged");
        if (::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(aside).constData()) == 0) {
            m_damagedFile = aside;
            m_fileState = FileState::Usable;
        } else {
            setProblem("is damaged and can't be set aside", errno);
            m_fileState = FileState::Unreadable;
        }
    }
    return m_fileState == FileState::Usable;
}

bool LinuxUserDefaults::dropOutdatedChanges() {
    bool isEverythingUpToDate = true;
    for (auto base = m_bases.begin(); base != m_bases.end();) {
        if (m_stored.value(base.key()) == base.value()) {
            ++base;
            continue;
        }
        m_changes.remove(base.key());
        base = m_bases.erase(base);
        m_problem = QStringLiteral("was changed by another program meanwhile");
        isEverythingUpToDate = false;
    }
    return isEverythingUpToDate;
}

bool LinuxUserDefaults::writeChanges() {
    QVariantMap values = m_stored;
    apply(m_changes, values);
    const auto document = m_propertyList.toXml(values);
    if (!document) {
        m_problem = QStringLiteral("can't be written (no property list can hold what was set)");
        return false;
    }
    if (const int error = write(*document); error != 0) {
        setProblem("can't be written", error);
        return false;
    }
    m_stored = std::move(values);
    m_changes.clear();
    m_bases.clear();
    m_problem.clear();
    return true;
}

int LinuxUserDefaults::write(const QByteArray &document) const {
    // One name for every writer, since only the lock's holder writes: what a killed one left is replaced by the next.
    QFile file(m_path + QStringLiteral(".new"));
    const QByteArray name = QFile::encodeName(file.fileName());
    std::error_code obstacle;
    std::filesystem::remove_all(name.constData(), obstacle);
    errno = 0;
    const bool isReplaced = file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered,
                                      QFile::ReadOwner | QFile::WriteOwner) &&
                            file.write(document) == document.size() && ::fsync(file.handle()) == 0 &&
                            ::rename(name.constData(), QFile::encodeName(m_path).constData()) == 0;
    const int error = isReplaced ? 0 : errno;
    if (!isReplaced) {
        file.remove();
    }
    return isReplaced || error != 0 ? error : EIO;
}

void LinuxUserDefaults::setProblem(const char *what, int error) {
    m_problem = QStringLiteral("%1 (%2)").arg(
        QLatin1StringView(what), QString::fromStdString(std::error_code(error, std::generic_category()).message()));
}

} // namespace quillmark
