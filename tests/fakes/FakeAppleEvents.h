#pragma once

#include "fakes/Transcript.h"
#include "platform/AppleEvents.h"

#include <functional>

namespace quillmark::test {

class FakeAppleEvents final : public AppleEvents, public Recorder {
public:
    using Recorder::Recorder;

    std::int32_t buildStatus = 0;
    std::int32_t addressStatus = 0;
    std::int32_t createStatus = 0;
    std::int32_t sendStatus = 0;
    std::function<void()> onSend = [] {};

    std::int32_t buildQuitEvent(const std::string &bundleIdentifier, std::unique_ptr<Event> &event) override {
        record("buildQuitEvent " + bundleIdentifier);
        event = std::make_unique<Event>();
        return buildStatus;
    }
    std::int32_t createProcessAddress(ProcessSerialNumber process, std::unique_ptr<Address> &address) override {
        record("createProcessAddress " + std::to_string(process.high) + ' ' + std::to_string(process.low));
        if (addressStatus == 0) {
            address = std::make_unique<RecordedAddress>(transcript());
        }
        return addressStatus;
    }
    std::int32_t createEvent(std::uint32_t eventClass, std::uint32_t eventIdentifier, const Address & /*address*/,
                             std::unique_ptr<Event> &event) override {
        record("createEvent " + textOf(eventClass) + ' ' + textOf(eventIdentifier));
        if (createStatus == 0) {
            event = std::make_unique<RecordedEvent>(transcript());
        }
        return createStatus;
    }
    std::int32_t sendMessage(const Event & /*event*/) override {
        record("sendMessage");
        onSend();
        return sendStatus;
    }

private:
    /// Records its own end.
    class RecordedAddress final : public Address, public Recorder {
    public:
        using Recorder::Recorder;
        ~RecordedAddress() override { record("dispose address"); }
    };
    class RecordedEvent final : public Event, public Recorder {
    public:
        using Recorder::Recorder;
        ~RecordedEvent() override { record("dispose event"); }
    };

    static std::string textOf(std::uint32_t code) {
        std::string text;
        for (int shift = 24; shift >= 0; shift -= 8) {
            text += static_cast<char>(code >> shift & 0xFFu);
        }
        return text;
    }
};

} // namespace quillmark::test
