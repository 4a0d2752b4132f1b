/// Starts an application bundle as the desktop does: open PATH. One that runs already is not started again. The
/// launcher's shells find this program first in their search path, where a Mac has one of its own.

#include "platform/Platform.h"
#include "platform/Workspace.h"

#include <QFile>
#include <QFileInfo>
#include <cstdio>
#include <cstdlib>

namespace {

int failed(const char *path, const char *why) {
    std::fprintf(stderr, "open: \"%s\" %s\n", path, why);
    return EXIT_FAILURE;
}

/// The folder of this program leads the search path of the shell that has started it. What it starts is to find the
/// system's programs.
void leaveSearchPath() {
    const QString own = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalPath();
    QStringList folders = qEnvironmentVariable("PATH").split(u':');
    folders.removeIf([&own](const QString &folder) { return QFileInfo(folder).canonicalFilePath() == own; });
    qputenv("PATH", folders.join(u':').toLocal8Bit());
}

} // namespace

int main(int count, char **arguments) {
    if (count != 2) {
        std::fputs("open: it takes the path of one application bundle\n", stderr);
        return EXIT_FAILURE;
    }
    // Without links, as the system tells what runs.
    const QString bundle = QFileInfo(QFile::decodeName(arguments[1])).canonicalFilePath();
    if (!bundle.endsWith(u".app") || !QFileInfo(bundle).isDir()) {
        return failed(arguments[1], "is no application bundle");
    }
    leaveSearchPath();
    return quillmark::platform().workspace.launchApplication(bundle) ? EXIT_SUCCESS
                                                                     : failed(arguments[1], "can't be started");
}
