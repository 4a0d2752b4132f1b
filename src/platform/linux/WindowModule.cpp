#include "platform/linux/WindowModule.h"

#include "platform/Bundle.h"
#include "platform/linux/PlugIn.h"

namespace quillmark {

Windows *WindowModule::open(QString &obstacle) {
    if (m_windows == nullptr) {
        void *const symbol = plugInSymbol(m_bundle, "libquillmark-windows.so", kOpenWindowsSymbol, obstacle);
        if (auto *const openWindows = reinterpret_cast<QuillmarkOpenWindows *>(symbol)) {
            m_windows = openWindows(m_bundle.resourcePath(), obstacle);
        }
    }
    return m_windows;
}

} // namespace quillmark
