#pragma once

#include "fakes/Transcript.h"
#include "platform/Alerts.h"

#include <deque>

namespace quillmark::test {

/// Records every text of an alert, and answers as told.
class FakeAlerts final : public Alerts, public Recorder {
public:
    using Recorder::Recorder;

    AlertDescription last;           ///< what was shown
    std::deque<AlertAnswer> answers; ///< in order; when they run out, the last button is pressed

    AlertAnswer runModal(const AlertDescription &alert) override {
        record("runModal [" + alert.windowTitle + "] " + alert.messageText + " | " + alert.informativeText + " | " +
               joined(alert.buttons, ", ") + (alert.suppressionText.empty() ? "" : " | ") + alert.suppressionText);
        last = alert;
        if (answers.empty()) {
            return {alert.lastButton(), false};
        }
        const AlertAnswer answer = answers.front();
        answers.pop_front();
        return answer;
    }
};

} // namespace quillmark::test
