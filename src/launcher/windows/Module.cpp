#include "branding/windows/HeaderDrawing.h"
#include "branding/windows/QtText.h"
#include "installcheck/windows/CheckWindow.h"
#include "launcher/windows/Alerts.h"
#include "launcher/windows/Display.h"
#include "platform/HeaderPicture.h"
#include "platform/linux/Windows.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QSocketNotifier>
#include <type_traits>

namespace quillmark {

namespace {

class DialogWindows final : public Windows {
public:
    DialogWindows(const QString &resourceFolder, OtherEvents &others)
        : m_alerts(resourceFolder), m_others(others.descriptor(), QSocketNotifier::Read) {
        QObject::connect(&m_others, &QSocketNotifier::activated, &m_others, [&others] { others.serveReady(); });
    }
    Alerts &alerts() override { return m_alerts; }
    void turn() override { QEventLoop().processEvents(QEventLoop::WaitForMoreEvents); }
    void run() override { QCoreApplication::exec(); }
    CheckWindowView *loadCheckWindow(const std::string &interfaceFile, const HeaderBranding &branding,
                                     CheckWindowView::Owner &owner, std::vector<std::string> &problems) override {
        QStringList found;
        m_checkWindow = CheckWindow::load(qtText(interfaceFile), branding, m_alerts.icon(), owner, found);
        for (const QString &problem : found) {
            problems.push_back(problem.toStdString());
        }
        return m_checkWindow.get();
    }

private:
    DialogAlerts m_alerts;
    QSocketNotifier m_others;
    std::unique_ptr<CheckWindow> m_checkWindow;
};

/// The name of the bundle that the folder of resources lies in: a brand's bundle has the brand's.
QString bundleName(const QString &resourceFolder) {
    return QFileInfo(QDir::cleanPath(resourceFolder + QStringLiteral("/../.."))).completeBaseName();
}

} // namespace

} // namespace quillmark

extern "C" Q_DECL_EXPORT bool quillmarkTryDisplay() { return quillmark::tryDisplay(); }

extern "C" Q_DECL_EXPORT quillmark::Windows *
quillmarkOpenWindows(const std::string &resourceFolder, quillmark::OtherEvents &otherEvents, std::string &obstacle) {
    const QString folder = quillmark::qtText(resourceFolder);
    if (!quillmark::openDisplay(quillmark::bundleName(folder), obstacle)) {
        return nullptr;
    }
    // Never destroyed, like the application it belongs to.
    static auto *const windows = new quillmark::DialogWindows(folder, otherEvents);
    return windows;
}

extern "C" Q_DECL_EXPORT bool quillmarkDrawHeader(const quillmark::HeaderPicture &picture, std::string &png,
                                                  std::string &obstacle) {
    if (!quillmark::openDisplay(quillmark::bundleName(quillmark::qtText(picture.branding.resourceFolder)), obstacle)) {
        return false;
    }
    png = quillmark::drawnHeader(picture).toStdString();
    if (png.empty()) {
        obstacle = "there is not enough memory for the picture";
    }
    return !png.empty();
}

static_assert(std::is_same_v<decltype(quillmarkTryDisplay), quillmark::QuillmarkTryDisplay>);
static_assert(std::is_same_v<decltype(quillmarkOpenWindows), quillmark::QuillmarkOpenWindows>);
static_assert(std::is_same_v<decltype(quillmarkDrawHeader), quillmark::QuillmarkDrawHeader>);
