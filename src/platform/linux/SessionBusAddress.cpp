#include "platform/linux/SessionBusAddress.h"

#include <QFile>

namespace quillmark {

QByteArray sessionBusAddress() {
    if (QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS"); !address.isEmpty()) {
        return address;
    }
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    const QByteArray socket = folder + "/bus";
    return !folder.isEmpty() && QFile::exists(QFile::decodeName(socket)) ? "unix:path=" + socket : QByteArray();
}

} // namespace quillmark
