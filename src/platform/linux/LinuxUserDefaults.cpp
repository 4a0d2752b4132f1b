#include "platform/linux/LinuxUserDefaults.h"

#include "platform/Bundle.h"
#include "platform/Clock.h"
#include "platform/PropertyList.h"
#include "platform/files/HomeFolder.h"
#include "platform/files/LockFile.h"
#include "platform/files/Path.h"
#include "platform/files/ReadFile.h"
#include "platform/files/Tree.h"
#include "platform/files/WriteAll.h"
#include "platform/process/AtEnd.h"
#include "platform/propertylist/PropertyListLimits.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace quillmark {

namespace {

void applyChanges(const Dictionary &changes, Dictionary &values) {
    for (const auto &[key, value] : changes) {
        if (value.isNothing()) {
            values.erase(key);
        } else {
            values.insert_or_assign(key, value);
        }
    }
}

} // namespace

std::string LinuxUserDefaults::pathFor(const Bundle &bundle) {
    std::string identifier = valueOf(bundle.infoDictionary(), "CFBundleIdentifier").text().value_or("");
    if (identifier.empty() || identifier.find('/') != std::string::npos) {
        identifier = "com.quillmark.QuillmarkLauncher";
    }
    return appendingPathComponent(homeFolder(), "Library/Preferences/" + identifier + ".plist");
}

LinuxUserDefaults::LinuxUserDefaults(std::string path, const PropertyList &propertyList, Clock &clock)
    : m_path(std::move(path)), m_propertyList(propertyList), m_clock(clock) {}

void LinuxUserDefaults::registerDefaults(const Dictionary &values) {
    const std::scoped_lock lock(m_mutex);
    applyChanges(values, m_registered);
}

Value LinuxUserDefaults::objectForKey(std::string_view key) {
    const std::scoped_lock lock(m_mutex);
    if (m_fileState == FileState::Unread) {
        read();
    }
    const auto change = m_changes.find(key);
    const Value &value = change != m_changes.end() ? change->second : valueOf(m_stored, key);
    return value.isNothing() ? valueOf(m_registered, key) : value;
}

void LinuxUserDefaults::setObject(std::string_view key, const Value &value) {
    const std::scoped_lock lock(m_mutex);
    const std::string name(key);
    m_changes.insert_or_assign(name, value);
    if (m_isChanging) {
        m_bases.insert_or_assign(name, valueOf(m_stored, key));
    } else {
        m_bases.erase(name);
    }
}

std::optional<std::string> LinuxUserDefaults::damagedFile() const {
    const std::scoped_lock lock(m_mutex);
    return m_damagedFile;
}

std::optional<std::string> LinuxUserDefaults::problem() const {
    const std::scoped_lock lock(m_mutex);
    return m_problem;
}

bool LinuxUserDefaults::synchronize() {
    const std::scoped_lock mutexLock(m_mutex);
    if (m_changes.empty()) {
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
        m_isChanging = true;
        const AtEnd changed([this] { m_isChanging = false; });
        change();
    }
    if (m_changes.empty()) {
        m_problem.reset(); // what was dropped is of no concern to this change
        return true;
    }
    return writeChanges();
}

Descriptor LinuxUserDefaults::lock() {
    const std::string folder = deletingLastPathComponent(m_path);
    const int error = makeFolders(folder);
    Descriptor held =
        error != 0 ? Descriptor() : lockedFile(folder + "/." + lastPathComponent(m_path) + ".lock", m_clock);
    if (!held.isOpen()) {
        setProblem("can't be written", error != 0 ? error : errno);
    }
    return held;
}

LinuxUserDefaults::FileState LinuxUserDefaults::load() {
    m_stored.clear();
    m_problem.reset();
    auto contents = readRegularFile(m_path, kMaximumPropertyListMemory);
    if (const auto *failure = std::get_if<ReadError>(&contents)) {
        if (failure->error == ENOENT) {
            return FileState::Usable;
        }
        setProblem("can't be read", failure->error);
        return FileState::Unreadable;
    }
    const Value root = m_propertyList.parse(std::get<std::string>(std::move(contents)));
    if (!root.is<Dictionary>()) {
        return FileState::Damaged;
    }
    m_stored = root.dictionary();
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
        const std::string aside = m_path + ".damaged";
        if (::rename(m_path.c_str(), aside.c_str()) == 0) {
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
    for (const auto &[key, base] : Dictionary(m_bases)) {
        if (valueOf(m_stored, key) != base) {
            m_changes.erase(key);
            m_bases.erase(key);
            m_problem = "was changed by another program meanwhile";
            isEverythingUpToDate = false;
        }
    }
    return isEverythingUpToDate;
}

bool LinuxUserDefaults::writeChanges() {
    Dictionary values = m_stored;
    applyChanges(m_changes, values);
    const auto document = m_propertyList.toXml(values);
    if (!document) {
        m_problem = "can't be written (no property list can hold what was set)";
        return false;
    }
    if (const int error = write(*document); error != 0) {
        setProblem("can't be written", error);
        return false;
    }
    m_stored = std::move(values);
    m_changes.clear();
    m_bases.clear();
    m_problem.reset();
    return true;
}

int LinuxUserDefaults::write(const std::string &document) const {
    // One name for every writer, since only the lock's holder writes: what a killed one left is replaced by the next.
    const std::string name = m_path + ".new";
    removeTree(name);
    errno = 0;
    const Descriptor file(::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    const bool isReplaced = file.isOpen() && writeAll(file.get(), document) && ::fsync(file.get()) == 0 &&
                            ::rename(name.c_str(), m_path.c_str()) == 0;
    const int error = isReplaced ? 0 : errno;
    if (!isReplaced && file.isOpen()) {
        ::unlink(name.c_str());
    }
    return isReplaced || error != 0 ? error : EIO;
}

void LinuxUserDefaults::setProblem(const char *what, int error) {
    m_problem = std::string(what) + " (" + std::generic_category().message(error) + ')';
}

} // namespace quillmark
