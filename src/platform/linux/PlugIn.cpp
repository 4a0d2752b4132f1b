#include "platform/linux/PlugIn.h"

#include "platform/Bundle.h"

#include <QFile>
#include <dlfcn.h>

namespace quillmark {

void *plugInSymbol(const Bundle &bundle, const char *fileName, const char *symbol, QString &obstacle) {
    const QString path = bundle.path() + QStringLiteral("/Contents/PlugIns/") + QString::fromLatin1(fileName);
    void *const plugIn = ::dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_LOCAL);
    void *const address = plugIn != nullptr ? ::dlsym(plugIn, symbol) : nullptr;
    if (address == nullptr) {
        const char *const text = ::dlerror(); // NOLINT(concurrency-mt-unsafe): the C library keeps one for each thread
        obstacle = text != nullptr ? QString::fromLocal8Bit(text) : QStringLiteral("the loader gives no reason");
    }
    return address;
}

} // namespace quillmark
