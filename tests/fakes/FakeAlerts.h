#pragma once

#include "fakes/Transcript.h"
#include "platform/Alerts.h"

#include <deque>

namespace quillmark::test {

/// Records every text of an alert, and answers as told.
class FakeAlerts final : public Alerts {
public:
    explicit FakeAlerts(Transcript &transcript) : m_transcript(transcript) {}

    std::deque<int> answers; ///< the buttons that are pressed, in order; when they run out, the last button is

    int runModal(const AlertDescription &alert) override {
        m_transcript.record(
            QStringLiteral("runModal [%1] %2 | %3 | %4")
                .arg(alert.windowTitle, alert.messageText, alert.informativeText, alert.buttons.join(u", ")));
        if (answers.empty()) {
            return alert.lastButton();
        }
        const int answer = answers.front();
        answers.pop_front();
        return answer;
    }

private:
    Transcript &m_transcript;
};

} // namespace quillmark::test
