#include "Input.h"

#include "Command.h"
#include "accounts/KeyList.h"
#include "launcher/BundleDefaults.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "utils/Utf8Text.h"

#include <QFile>
#include <unistd.h>

namespace quillmark::ctl {

namespace {

QString text(const QByteArray &bytes) {
    QString result = utf8Text(bytes);
    if (result.isNull()) {
        throw Failure{QStringLiteral("standard input"), QStringLiteral("is no UTF-8")};
    }
    return result;
}

} // namespace

QByteArray standardInput() {
    QFile file;
    if (!file.open(STDIN_FILENO, QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        throw Failure{QStringLiteral("standard input"), file.errorString()};
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        throw Failure{QStringLiteral("standard input"), file.errorString()};
    }
    return bytes.isNull() ? QByteArray("") : bytes;
}

QString standardInputText() { return text(standardInput()); }

QByteArray secretInput() {
    const QByteArray bytes = standardInput();
    return bytes.chopped(bytes.endsWith('\n') ? 1 : 0);
}

QString secretInputText() { return text(secretInput()); }

void requirePreferences() {
    UserDefaults &defaults = platform().userDefaults;
    registerBundleDefaults(platform());
    defaults.objectForKey(kUserList); // any look at them reads them
    if (!defaults.problem().isNull()) {
        throw Failure{defaults.file(), defaults.problem()};
    }
}

} // namespace quillmark::ctl
