#include "platform/linux/WindowModule.h"

#include "platform/Bundle.h"
#include "platform/linux/PlugIn.h"

namespace quillmark {

namespace {

constexpr const char *kFileName = "libquillmark-windows.so";

} // namespace

Windows *WindowModule::open(QString &obstacle) {
    if (m_windows == nullptr) {
        void *const symbol = plugInSymbol(m_bundle, kFileName, kOpenWindowsSymbol, obstacle);
        if (auto *const openWindows = reinterpret_cast<QuillmarkOpenWindows *>(symbol)) {
            m_windows = openWindows(m_bundle.resourcePath(), obstacle);
        }
    }
    return m_windows;
}

bool WindowModule::drawHeader(const HeaderPicture &picture, QByteArray &png, QString &obstacle) const {
    void *const symbol = plugInSymbol(m_bundle, kFileName, kDrawHeaderSymbol, obstacle);
    auto *const draw = reinterpret_cast<QuillmarkDrawHeader *>(symbol);
    return draw != nullptr && draw(picture, png, obstacle);
}

} // namespace quillmark
