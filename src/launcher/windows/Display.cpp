#include "launcher/windows/Display.h"

#include <QApplication>
#include <array>
#include <clocale>

namespace quillmark {

namespace {

/// Qt keeps both by reference for as long as the application lives.
std::array<char, sizeof("Quillmark")> programName{"Quillmark"};
std::array<char *, 2> arguments{programName.data(), nullptr};
int argumentCount = 1;

} // namespace

bool tryDisplay() {
    static const auto *const application = new QGuiApplication(argumentCount, arguments.data());
    return application != nullptr;
}

bool openDisplay(QString &obstacle) {
    if (QCoreApplication *existing = QCoreApplication::instance(); existing != nullptr) {
        obstacle = QStringLiteral("the process has an application without windows");
        return qobject_cast<QApplication *>(existing) != nullptr;
    }
    static const auto *const application = new QApplication(argumentCount, arguments.data());
    Q_UNUSED(application)
    QApplication::setQuitOnLastWindowClosed(false); // the start-up goes on behind an alert
    std::setlocale(LC_NUMERIC, "C");                // Qt took over the user's, and files need their decimal points
    return true;
}

} // namespace quillmark
