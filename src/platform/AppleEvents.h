#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace quillmark {

/// The number that stands for four characters, as "aevt".
constexpr std::uint32_t fourCharacterCode(const char (&characters)[5]) {
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i) {
        code = code << 8 | static_cast<unsigned char>(characters[i]);
    }
    return code;
}

/// Requests to other applications, as the Apple Event Manager sends them. Statuses are its numbers; 0 is success.
class AppleEvents {
public:
    /// A request that is ready to be sent.
    class Event {
    public:
        virtual ~Event() = default;
    };

    /// Whom a request is for.
    class Address {
    public:
        virtual ~Address() = default;
    };

    /// A process's serial number.
    struct ProcessSerialNumber {
        std::uint32_t high = 0;
        std::uint32_t low = 0;
    };

    virtual ~AppleEvents() = default;

    /// Makes the request to the application with that bundle identifier to quit. \returns a status.
    virtual std::int32_t buildQuitEvent(const std::string &bundleIdentifier, std::unique_ptr<Event> &event) = 0;
    /// Makes the address of a process. \returns a status.
    virtual std::int32_t createProcessAddress(ProcessSerialNumber process, std::unique_ptr<Address> &address) = 0;
    /// Makes a request without parameters; its class and identifier are four-character codes. \returns a status.
    virtual std::int32_t createEvent(std::uint32_t eventClass, std::uint32_t eventIdentifier, const Address &address,
                                     std::unique_ptr<Event> &event) = 0;
    /// Sends it without waiting for an answer. \returns a status.
    virtual std::int32_t sendMessage(const Event &event) = 0;
};

} // namespace quillmark
