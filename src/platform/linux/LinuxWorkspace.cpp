#include "platform/linux/LinuxWorkspace.h"

#include "platform/BundleSearch.h"
#include "platform/HomeFolder.h"
#include "platform/Path.h"
#include "platform/PropertyList.h"
#include "platform/linux/DetachedSpawn.h"
#include "platform/linux/LockFile.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/Trash.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <algorithm>
#include <array>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <vector>

namespace quillmark {

namespace {

constexpr QLatin1StringView kFinderPath("/System/Library/CoreServices/Finder.app"); // where it is on a Mac

/// Starts a program that has nothing in common with this process but its user and its environment.
bool spawnDetached(const QByteArray &executable, const QByteArray &onlyArgument = {}) {
    DetachedSpawn spawn;
    spawn.separate();
    QByteArray first = executable;
    QByteArray second = onlyArgument;
    char *arguments[] = {first.data(), second.isEmpty() ? nullptr : second.data(), nullptr};
    return spawn.start(executable.constData(), arguments, environ) == 0;
}

std::vector<int> processNumbers() {
    std::vector<int> numbers;
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(::opendir("/proc"), ::closedir);
    while (directory != nullptr) {
        const struct dirent *entry = ::readdir(directory.get()); // NOLINT(concurrency-mt-unsafe): a stream of our own
        if (entry == nullptr) {
            break;
        }
        bool isNumber = false;
        const int number = QByteArray(entry->d_name).toInt(&isNumber);
        if (isNumber) {
            numbers.push_back(number);
        }
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

/// Null when the process has ended or may not be looked at.
QString executableOfProcess(int process) {
    std::array<char, PATH_MAX> buffer{};
    const QByteArray link = "/proc/" + QByteArray::number(process) + "/exe";
    const ssize_t length = ::readlink(link.constData(), buffer.data(), buffer.size());
    QByteArray path(buffer.data(), std::max<ssize_t>(length, 0));
    // An update took the file's place; but a file may be called like this, too.
    if (path.endsWith(" (deleted)") && ::access(path.constData(), F_OK) != 0) {
        path.chop(10);
    }
    return path.isEmpty() ? QString() : QFile::decodeName(path);
}

/// The bundle whose Contents/MacOS folder holds the executable; null when there is none.
QString bundleOf(const QString &executable) {
    const QString folder = deletingLastPathComponent(executable);
    const QString suffix = QStringLiteral("/Contents/MacOS");
    const QString bundle = folder.chopped(folder.endsWith(suffix) ? suffix.size() : folder.size());
    return bundle.endsWith(u".app") ? bundle : QString();
}

bool isRunning(const QString &executable) {
    const std::vector<int> processes = processNumbers();
    return std::any_of(processes.begin(), processes.end(),
                       [&executable](int process) { return executableOfProcess(process) == executable; });
}

} // namespace

QStringList LinuxWorkspace::applicationsFolders(Domain domain) const {
    const QString local = QStringLiteral("/Applications");
    const QString users = appendingPathComponent(qtText(homeFolder()), local);
    switch (domain) {
    case Domain::User:
        return {users};
    case Domain::Local:
        return {local};
    case Domain::All:
        break;
    }
    return {users, local};
}

/// The one that the desktop goes by and the one that everybody knows. A desktop that has none names the home folder.
QStringList LinuxWorkspace::downloadsFolders() const {
    QStringList folders{appendingPathComponent(qtText(homeFolder()), QStringLiteral("Downloads"))};
    const QString desktops = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    if (!desktops.isEmpty() && desktops != qtText(homeFolder()) && !folders.contains(desktops)) {
        folders.prepend(desktops);
    }
    return folders;
}

/// A Mac's, and those of the desktops.
QStringList LinuxWorkspace::volumesFolders() const {
    return {QStringLiteral("/Volumes/"), QStringLiteral("/media/"), QStringLiteral("/run/media/")};
}

QList<QVariantMap> LinuxWorkspace::launchedApplications() const {
    const auto recordOf = [](const QString &identifier, const QString &bundle, int process) {
        QVariantMap record{{kApplicationPath, bundle}, {kApplicationProcessIdentifier, process}};
        if (!identifier.isEmpty()) {
            record.insert(kApplicationBundleIdentifier, identifier);
        }
        return record;
    };
    const std::optional<int> fileManager = m_sessionBus.processOwning(kFileManagerName);
    QList<QVariantMap> records;
    for (const int process : processNumbers()) {
        if (process == fileManager) {
            records.append(recordOf(kFinderIdentifier, kFinderPath, process));
            continue;
        }
        const QString executable = executableOfProcess(process);
        const QString bundle = bundleOf(executable);
        if (bundle.isNull() || executableOf(bundle) != executable) {
            continue;
        }
        const QVariantMap information = m_propertyList.readDictionary(bundle + QStringLiteral("/Contents/Info.plist"));
        records.append(recordOf(information.value(QStringLiteral("CFBundleIdentifier")).toString(), bundle, process));
    }
    return records;
}

QString LinuxWorkspace::bundleWithIdentifier(const QString &bundleIdentifier) const {
    if (bundleIdentifier == kFinderIdentifier) {
        return kFinderPath;
    }
    std::optional<QStringList> paths;
    for (const QString &folder : applicationsFolders(Domain::All)) {
        pathsForIdent(bundleIdentifier, folder, &paths, m_propertyList);
    }
    return paths ? paths->first() : QString();
}

bool LinuxWorkspace::launchApplication(const QString &path) {
    if (path == kFinderPath) {
        return true;
    }
    const QString executable = executableOf(path);
    if (!executable.startsWith(u'/')) {
        return false;
    }
    if (bundleOf(executable).isNull()) {
        return spawnDetached(QFile::encodeName(executable));
    }
    // So that of several that launch it at once one does. Where there can be no lock it is launched all the same.
    const QString folder = appendingPathComponent(qtText(homeFolder()), QStringLiteral("Library/Caches/Quillmark"));
    QDir().mkpath(folder);
    const Descriptor lock = lockedFile(folder + QStringLiteral("/launch.lock"), m_clock);
    return isRunning(executable) || spawnDetached(QFile::encodeName(executable));
}

bool LinuxWorkspace::openFolder(const QString &path) {
    return spawnDetached("/usr/bin/xdg-open", QFile::encodeName(path));
}

bool LinuxWorkspace::recycle(const QString &name, const QString &folder) {
    return moveToTrash(name.toStdString(), folder.toStdString());
}

/// A bundle's executable is the one that its Info.plist names, else the one named as the bundle.
QString LinuxWorkspace::executableOf(const QString &path) const {
    if (!path.endsWith(u".app")) {
        return path;
    }
    const QVariantMap information = m_propertyList.readDictionary(path + QStringLiteral("/Contents/Info.plist"));
    QString name = information.value(QStringLiteral("CFBundleExecutable")).toString();
    if (name.isEmpty()) {
        name = lastPathComponent(path).chopped(4);
    }
    return path + QStringLiteral("/Contents/MacOS/") + name;
}

} // namespace quillmark
