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

private:
    DialogAlerts m_alerts;
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
