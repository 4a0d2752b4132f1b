#include "platform/HomeFolder.h"

#include "platform/Path.h"

#include <QFile>
#include <pwd.h>
#include <unistd.h>

namespace quillmark {

QString homeFolder() {
    QString home = qEnvironmentVariable("HOME");
    if (!home.startsWith(u'/')) {
        const struct passwd *account = ::getpwuid(::getuid()); // NOLINT(concurrency-mt-unsafe): the answer is copied
        home = account != nullptr ? QFile::decodeName(account->pw_dir) : QStringLiteral("/");
    }
    while (home.size() > 1 && home.endsWith(u'/')) {
        home.chop(1);
    }
    return home;
}

QString expandingTilde(const QString &path) {
    return path == u"~" || path.startsWith(u"~/") ? appendingPathComponent(homeFolder(), path.mid(1)) : path;
}

} // namespace quillmark
