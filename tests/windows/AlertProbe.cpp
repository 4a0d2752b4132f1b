// Shows the alert of a second start, from a bundle of its own and in the user's language, and prints the answer:
// "answer 0".

#include "branding/LocalizedStrings.h"
#include "platform/Alerts.h"
#include "platform/Platform.h"
#include "platform/Problem.h"
#include "utils/Log.h"

int main() {
    using quillmark::QMLocalizedString;
    quillmark::setProblemReporter([](const QString &sentence) { quillmark::logError("%@", sentence); });
    quillmark::AlertDescription alert;
    alert.windowTitle = QMLocalizedString(QStringLiteral("ProductName"));
    alert.messageText = QMLocalizedString(QStringLiteral("QuillmarkLauncher_AlreadyRunning"));
    alert.informativeText = QMLocalizedString(QStringLiteral("QuillmarkLauncher_YouMustQuit"));
    alert.buttons = {QMLocalizedString(QStringLiteral("Quit"))};
    quillmark::NSPrintf("answer %d", quillmark::platform().alerts.runModal(alert));
}
