#pragma once

#include "fakes/Transcript.h"
#include "platform/AppleEvents.h"

#include <functional>

namespace quillmark::test {

class FakeAppleEvents final : public AppleEvents {
public:
    explicit FakeAppleEvents(Transcript &transcript) : m_transcript(transcript) {}

    std::int32_t buildStatus = 0;
    std::int32_t addressStatus = 0;
    std::int32_t createStatus = 0;
    std::int32_t sendStatus = 0;
    std::function<void()> onSend = [] {};

    std::int32_t buildQuitEvent(const std::string &bundleIdentifier, std::unique_ptr<Event> &event) override {
        m_transcript.record("buildQuitEvent " + bundleIdentifier);
        event = std::make_unique<Event>();
        return buildStatus;
    }
    std::int32_t createProcessAddress(ProcessSerialNumber process, std::unique_ptr<Address> &address) override {
        m_transcript.record("createProcessAddress " + std::to_string(process.high) + ' ' + std::to_string(process.low));
        if (addressStatus == 0) {
            address = std::make_unique<RecordedAddress>(m_transcript);
        }
        return addressStatus;
    }
    std::int32_t createEvent(std::uint32_t eventClass, std::uint32_t eventIdentifier, const Address & /*address*/,
                             std::unique_ptr<Event> &event) override {
        m_transcript.record("createEvent " + textOf(eventClass) + ' ' + textOf(eventIdentifier));
        if (createStatus == 0) {
            event = std::make_unique<RecordedEvent>(m_transcript);
        }
        return createStatus;
    }
    std::int32_t sendMessage(const Event & /*event*/) override {
        m_transcript.record("sendMessage");
        onSend();
        return sendStatus;
    }

private:
    /// Records its own end.
    class RecordedAddress final : public Address {
    public:
        explicit RecordedAddress(Transcript &transcript) : m_transcript(transcript) {}
        ~RecordedAddress() override { m_transcript.record("dispose address"); }

    private:
        Transcript &m_transcript;
    };
    class RecordedEvent final : public Event {
    public:
        explicit RecordedEvent(Transcript &transcript) : m_transcript(transcript) {}
        ~RecordedEvent() override { m_transcript.record("dispose event"); }

    private:
        Transcript &m_transcript;
    };

    static std::string textOf(std::uint32_t code) {
        std::string text;
        for (int shift = 24; shift >= 0; shift -= 8) {
            text += static_cast<char>(code >> shift & 0xFFu);
        }
        return text;
    }

    Transcript &m_transcript;
};

} // namespace quillmark::test
