#include "launcher/windows/Display.h"

#include <QApplication>
#include <QByteArray>
#include <array>
#include <clocale>
#include <cstdio>

namespace quillmark {

namespace {

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

} // namespace

bool tryDisplay() {
    if (QCoreApplication::instance() != nullptr) {
        return true; // copied with the process, which has tried it already
    }
    static auto &arguments = *new Arguments(QStringLiteral("trial")); // which shows no window
    static const auto *const application = new QGuiApplication(arguments.count, arguments.values.data());
    return application != nullptr;
}

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

} // namespace quillmark
