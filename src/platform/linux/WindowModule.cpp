#include "platform/linux/WindowModule.h"

#include "platform/Bundle.h"

#include <QFile>
#include <dlfcn.h>

namespace quillmark {

namespace {

QString loaderError() {
    const char *text = ::dlerror(); // NOLINT(concurrency-mt-unsafe): the C library keeps one for each thread
    return text != nullptr ? QString::fromLocal8Bit(text) : QStringLiteral("the loader gives no reason");
}

} // namespace

Windows *WindowModule::open(QString &obstacle) {
    if (m_windows != nullptr) {
        return m_windows;
    }
    const QString path = m_bundle.path() + QStringLiteral("/Contents/PlugIns/libquillmark-windows.so");
    // Never closed: the window libraries don't survive that.
    void *module = ::dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
        obstacle = loaderError();
        return nullptr;
    }
    auto *const openWindows = reinterpret_cast<QuillmarkOpenWindows *>(::dlsym(module, kOpenWindowsSymbol));
    if (openWindows == nullptr) {
        obstacle = loaderError();
        return nullptr;
    }
    m_windows = openWindows(m_bundle.resourcePath(), obstacle);
    return m_windows;
}

} // namespace quillmark
