// Shows an alert from a bundle of its own, in the user's language, and prints the answer: "answer 0". It is the alert
// of a second start, or the question before a move ("AlertProbe move"), with its longest text.

#include "platform/Alerts.h"
#include "platform/Platform.h"
#include "platform/process/Problem.h"
#include "texts/LocalizedStrings.h"
#include "utils/Log.h"

int main(int count, char ** /*arguments*/) {
    const auto text = [](const char *key) { return quillmark::QMLocalizedString(key); };
    quillmark::setProblemReporter([](const std::string &sentence) { quillmark::logError("%@", sentence); });
    quillmark::AlertDescription alert;
    alert.windowTitle = text("ProductName");
    if (count > 1) {
        alert.messageText = text("Move to Applications folder?");
        alert.informativeText = text("I can move myself to the Applications folder if you'd like.") + ' ' +
                                text("Note that this will require an administrator password.");
        alert.buttons = {text("Move to Applications Folder"), text("Do Not Move")};
        alert.suppressionText = text("Do not show this message again");
    } else {
        alert.messageText = text("QuillmarkLauncher_AlreadyRunning");
        alert.informativeText = text("QuillmarkLauncher_YouMustQuit");
        alert.buttons = {text("Quit")};
    }
    quillmark::NSPrintf("answer %d", quillmark::platform().alerts.runModal(alert).button);
}
