#include "installcheck/windows/CheckWindow.h"
#include "launcher/windows/Alerts.h"
#include "launcher/windows/Display.h"
#include "platform/linux/Windows.h"

#include <type_traits>

namespace quillmark {

namespace {

class DialogWindows final : public Windows {
public:
    explicit DialogWindows(const QString &resourceFolder) : m_alerts(resourceFolder) {}
    Alerts &alerts() override { return m_alerts; }
    CheckWindowView *loadCheckWindow(const QString &interfaceFile, const HeaderBranding &branding,
                                     CheckWindowView::Owner &owner, QString &obstacle) override {
        m_checkWindow = CheckWindow::load(interfaceFile, branding, m_alerts.icon(), owner, obstacle);
        return m_checkWindow.get();
    }

private:
    DialogAlerts m_alerts;
    std::unique_ptr<CheckWindow> m_checkWindow;
};

} // namespace

} // namespace quillmark

extern "C" Q_DECL_EXPORT quillmark::Windows *quillmarkOpenWindows(const QString &resourceFolder, QString &obstacle) {
    if (!quillmark::openDisplay(obstacle)) {
        return nullptr;
    }
    // Never destroyed, like the application it belongs to.
    static auto *const windows = new quillmark::DialogWindows(resourceFolder);
    return windows;
}

static_assert(std::is_same_v<decltype(quillmarkOpenWindows), quillmark::QuillmarkOpenWindows>);
