#pragma once

#include <QString>
#include <memory>

namespace quillmark {

/// Requests to other applications, as the Apple Event Manager sends them. Statuses are its numbers; 0 is success.
class AppleEvents {
public:
    /// A request that is ready to be sent.
    class Event {
    public:
        Event() = default;
        Event(const Event &) = delete;
        Event &operator=(const Event &) = delete;
        virtual ~Event() = default;
    };

    virtual ~AppleEvents() = default;

    /// Makes the request to the application with that bundle identifier to quit. \returns a status.
    virtual qint32 buildQuitEvent(const QString &bundleIdentifier, std::unique_ptr<Event> &event) = 0;
    /// Sends it without waiting for an answer. \returns a status.
    virtual qint32 sendMessage(const Event &event) = 0;
};

} // namespace quillmark
