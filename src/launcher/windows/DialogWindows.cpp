#include "alerts/windows/DialogAlerts.h"
#include "branding/windows/HeaderPng.h"
#include "installcheck/windows/CheckWindow.h"
#include "platform/windows/HeaderPicture.h"
#include "platform/windows/Windows.h"
#include "texts/windows/QtText.h"

#include <QApplication>
#include <QByteArray>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QSocketNotifier>
#include <array>
#include <clocale>
#include <cstdio>
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

/// What the display is told of the program. Qt keeps all of it by reference for as long as the application lives.
struct Arguments {
    explicit Arguments(const QString &program) : name(program.toUtf8()), values{name.data(), nullptr} {}
    QByteArray name;
    std::array<char *, 2> values;
    int count = 1;
};

/// What Qt remarks about the session (its locale, its folders) is of no use to who started the program.
void tellFailuresAlone(QtMsgType type, const QMessageLogContext &, const QString &text) {
    if (type == QtCriticalMsg || type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    }
}

/// Makes the process's QApplication, unless there is one. It lives until the process ends. Where a copy of the process
/// can't make one, this one would be aborted. \param program the name by which desktops and assistive programs know it.
/// \param obstacle receives why there can be none, as a part of a sentence. \returns false when there can be none.
bool openDisplay(const QString &program, std::string &obstacle) {
    if (QCoreApplication *existing = QCoreApplication::instance(); existing != nullptr) {
        obstacle = "the process has an application without windows";
        return qobject_cast<QApplication *>(existing) != nullptr;
    }
    qInstallMessageHandler(tellFailuresAlone);
    static auto &arguments = *new Arguments(program);
    static const auto *const application = new QApplication(arguments.count, arguments.values.data());
    Q_UNUSED(application)
    QApplication::setQuitOnLastWindowClosed(false); // the start-up goes on behind an alert
    std::setlocale(LC_NUMERIC, "C");                // Qt took over the user's, and files need their decimal points
    return true;
}

/// The name of the bundle that the folder of resources lies in: a brand's bundle has the brand's.
QString bundleName(const QString &resourceFolder) {
    return QFileInfo(QDir::cleanPath(resourceFolder + QStringLiteral("/../.."))).completeBaseName();
}

} // namespace

} // namespace quillmark

extern "C" Q_DECL_EXPORT bool quillmarkTryDisplay() {
    if (QCoreApplication::instance() != nullptr) {
        return true; // copied with the process, which has tried it already
    }
    static auto &arguments = *new quillmark::Arguments(QStringLiteral("trial")); // which shows no window
    static const auto *const application = new QGuiApplication(arguments.count, arguments.values.data());
    return application != nullptr;
}

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
    png = quillmark::headerPng(picture).toStdString();
    if (png.empty()) {
        obstacle = "there is not enough memory for the picture";
    }
    return !png.empty();
}

static_assert(std::is_same_v<decltype(quillmarkTryDisplay), quillmark::QuillmarkTryDisplay>);
static_assert(std::is_same_v<decltype(quillmarkOpenWindows), quillmark::QuillmarkOpenWindows>);
static_assert(std::is_same_v<decltype(quillmarkDrawHeader), quillmark::QuillmarkDrawHeader>);
