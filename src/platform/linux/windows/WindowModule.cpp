#include "platform/linux/windows/WindowModule.h"

#include "platform/Bundle.h"
#include "platform/linux/mainthread/RunLoop.h"
#include "platform/linux/plugins/PlugIn.h"

#include <cstdlib>

namespace quillmark {

namespace {

constexpr const char *kFileName = "libquillmark-windows.so";

bool hasDisplayName() {
    const auto isSet = [](const char *name) { return std::getenv(name) != nullptr; }; // NOLINT(concurrency-mt-unsafe)
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM");
}

/// For an application that needs no display and takes nothing from the desktop.
void leaveDesktop() {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1); // NOLINT(concurrency-mt-unsafe): no other thread runs yet
    for (const char *setting : {"QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE", "QT_SCALE_FACTOR"}) {
        ::unsetenv(setting); // NOLINT(concurrency-mt-unsafe)
    }
}

} // namespace

void WindowModule::prepare() {
    if (m_windows == nullptr && hasDisplayName() && !m_trial.isUnderWay()) {
        std::string obstacle; // comes again when the module is wanted
        void *const address = plugInSymbol(m_bundle, kFileName, kTryDisplaySymbol, obstacle);
        if (auto *const tryDisplay = reinterpret_cast<QuillmarkTryDisplay *>(address)) {
            m_trial.begin(tryDisplay);
        }
    }
}

void *WindowModule::symbol(const char *name, std::string &obstacle) {
    prepare();
    std::string loadersObstacle;
    void *const address = plugInSymbol(m_bundle, kFileName, name, loadersObstacle);
    const bool isDisplayThere = m_trial.succeeds() || m_windows != nullptr;
    if (address == nullptr) {
        obstacle = loadersObstacle;
    } else if (!isDisplayThere) {
        obstacle = hasDisplayName() ? "the display can't be reached" : "there is no display";
    }
    return isDisplayThere ? address : nullptr;
}

Windows *WindowModule::open(std::string &obstacle) {
    if (m_windows == nullptr) {
        if (auto *const openWindows = reinterpret_cast<QuillmarkOpenWindows *>(symbol(kOpenWindowsSymbol, obstacle))) {
            m_windows = openWindows(m_bundle.resourcePath(), m_runLoop, obstacle);
        }
        if (m_windows != nullptr) {
            m_runLoop.waitWith(*m_windows);
        }
    }
    return m_windows;
}

std::optional<std::string> WindowModule::drawHeader(const HeaderPicture &picture, std::string &obstacle) {
    if (m_windows == nullptr) {
        leaveDesktop();
    }
    auto *const draw = reinterpret_cast<QuillmarkDrawHeader *>(symbol(kDrawHeaderSymbol, obstacle));
    std::string png;
    return draw != nullptr && draw(picture, png, obstacle) ? std::optional(png) : std::nullopt;
}

} // namespace quillmark
