#pragma once

#include "fakes/Transcript.h"
#include "platform/AppleEvents.h"

#include <functional>

namespace quillmark::test {

class FakeAppleEvents final : public AppleEvents {
public:
    explicit FakeAppleEvents(Transcript &transcript) : m_transcript(transcript) {}

    qint32 buildStatus = 0;
    qint32 addressStatus = 0;
    qint32 createStatus = 0;
    qint32 sendStatus = 0;
    std::function<void()> onSend = [] {};

    qint32 buildQuitEvent(const QString &bundleIdentifier, std::unique_ptr<Event> &event) override {
        m_transcript.record(QStringLiteral("buildQuitEvent ") + bundleIdentifier);
        event = std::make_unique<Event>();
        return buildStatus;
    }
    qint32 createProcessAddress(ProcessSerialNumber process, std::unique_ptr<Address> &address) override {
        m_transcript.record(QStringLiteral("createProcessAddress %1 %2").arg(process.high).arg(process.low));
        if (addressStatus == 0) {
            address = std::make_unique<RecordedAddress>(m_transcript);
        }
        return addressStatus;
    }
    qint32 createEvent(quint32 eventClass, quint32 eventIdentifier, const Address & /*address*/,
                       std::unique_ptr<Event> &event) override {
        m_transcript.record(QStringLiteral("createEvent ") + textOf(eventClass) + u' ' + textOf(eventIdentifier));
        if (createStatus == 0) {
            event = std::make_unique<RecordedEvent>(m_transcript);
        }
        return createStatus;
    }
    qint32 sendMessage(const Event & /*event*/) override {
        m_transcript.record(QStringLiteral("sendMessage"));
        onSend();
        return sendStatus;
    }

private:
    /// Records its own end.
    class RecordedAddress final : public Address {
    public:
        explicit RecordedAddress(Transcript &transcript) : m_transcript(transcript) {}
        ~RecordedAddress() override { m_transcript.record(QStringLiteral("dispose address")); }

    private:
        Transcript &m_transcript;
    };
    class RecordedEvent final : public Event {
    public:
        explicit RecordedEvent(Transcript &transcript) : m_transcript(transcript) {}
        ~RecordedEvent() override { m_transcript.record(QStringLiteral("dispose event")); }

    private:
        Transcript &m_transcript;
    };

    static QString textOf(quint32 code) {
        QString text;
        for (int shift = 24; shift >= 0; shift -= 8) {
            text += QLatin1Char(static_cast<char>(code >> shift & 0xFFu));
        }
        return text;
    }

    Transcript &m_transcript;
};

} // namespace quillmark::test
