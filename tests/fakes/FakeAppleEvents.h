#pragma once

#include "fakes/Transcript.h"
#include "platform/AppleEvents.h"

#include <functional>

namespace quillmark::test {

class FakeAppleEvents final : public AppleEvents {
public:
    explicit FakeAppleEvents(Transcript &transcript) : m_transcript(transcript) {}

    qint32 buildStatus = 0;
    qint32 sendStatus = 0;
    std::function<void()> onSend = [] {};

    qint32 buildQuitEvent(const QString &bundleIdentifier, std::unique_ptr<Event> &event) override {
        m_transcript.record(QStringLiteral("buildQuitEvent ") + bundleIdentifier);
        event = std::make_unique<Event>();
        return buildStatus;
    }
    qint32 sendMessage(const Event & /*event*/) override {
        m_transcript.record(QStringLiteral("sendMessage"));
        onSend();
        return sendStatus;
    }

private:
    Transcript &m_transcript;
};

} // namespace quillmark::test
