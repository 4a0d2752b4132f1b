#include "platform/linux/LinuxWorkspace.h"

#include "platform/HomeFolder.h"
#include "platform/PropertyList.h"

#include <QFile>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

namespace quillmark {

namespace {

/// Starts a program that has nothing in common with this process but its user and its environment.
bool spawnDetached(const QByteArray &executable) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    if (::posix_spawn_file_actions_init(&actions) != 0) {
        return false;
    }
    if (::posix_spawnattr_init(&attributes) != 0) {
        ::posix_spawn_file_actions_destroy(&actions);
        return false;
    }
    sigset_t none;
    sigset_t all;
    ::sigemptyset(&none);
    ::sigfillset(&all);
    ::posix_spawnattr_setsigmask(&attributes, &none);
    ::posix_spawnattr_setsigdefault(&attributes, &all);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    ::posix_spawn_file_actions_addchdir_np(&actions, "/"); // no folder is kept busy

    QByteArray argument = executable;
    char *arguments[] = {argument.data(), nullptr};
    pid_t child = 0;
    const int error = ::posix_spawn(&child, executable.constData(), &actions, &attributes, arguments, environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    return error == 0;
}

} // namespace

QStringList LinuxWorkspace::applicationsFolders(Domain domain) const {
    const QString folder = QStringLiteral("/Applications");
    return {domain == Domain::User ? homeFolder() + folder : folder};
}

bool LinuxWorkspace::launchApplication(const QString &path) {
    const QString executable = executableOf(path);
    return executable.startsWith(u'/') && spawnDetached(QFile::encodeName(executable));
}

/// A bundle's executable is the one that its Info.plist names, else the one named as the bundle.
QString LinuxWorkspace::executableOf(const QString &path) const {
    if (!path.endsWith(u".app")) {
        return path;
    }
    const QVariantMap information = m_propertyList.readDictionary(path + QStringLiteral("/Contents/Info.plist"));
    QString name = information.value(QStringLiteral("CFBundleExecutable")).toString();
    if (name.isEmpty()) {
        name = path.mid(path.lastIndexOf(u'/') + 1).chopped(4);
    }
    return path + QStringLiteral("/Contents/MacOS/") + name;
}

} // namespace quillmark
